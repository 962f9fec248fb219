#include "host/controls/LyricsMove.h"

#include <QTextLayout>

namespace Corvella {

namespace {

using CursorMode = QTextLayout::CursorMode;

qsizetype next(LyricsLayout& layout, qsizetype place, CursorMode mode) {
  const auto& lines = layout.lines();
  const auto line = lines.lineAt(place);
  if (place == lines.end(line)) return line + 1 < lines.count() ? place + 1 : place;
  const auto start = lines.start(line);
  const auto inLine = static_cast<int>(place - start);
  return start + layout.paragraph(line).layout().nextCursorPosition(inLine, mode);
}

qsizetype previous(LyricsLayout& layout, qsizetype place, CursorMode mode) {
  const auto& lines = layout.lines();
  const auto line = lines.lineAt(place);
  const auto start = lines.start(line);
  if (place == start) return line > 0 ? place - 1 : place;
  const auto inLine = static_cast<int>(place - start);
  return start + layout.paragraph(line).layout().previousCursorPosition(inLine, mode);
}

/// In a line that reads from right to left, the next letter stands on the left.
qsizetype sideways(LyricsLayout& layout, qsizetype place, bool right, CursorMode mode) {
  const auto& lines = layout.lines();
  const bool rightToLeft = lines.line(lines.lineAt(place)).isRightToLeft();
  return right != rightToLeft ? next(layout, place, mode) : previous(layout, place, mode);
}

qsizetype upOrDown(LyricsLayout& layout, qsizetype place, bool down, double column) {
  const auto caret = layout.caretAt(place);
  if (caret.isEmpty()) return place;
  const auto height = down ? caret.bottom() + 1 : caret.top() - 1;
  return layout.placeAt({column, height}, QTextLine::CursorBetweenCharacters);
}

qsizetype rowStart(LyricsLayout& layout, qsizetype place) {
  const auto& lines = layout.lines();
  return lines.start(lines.lineAt(place)) + layout.rowOf(place).textStart();
}

qsizetype rowEnd(LyricsLayout& layout, qsizetype place) {
  const auto& lines = layout.lines();
  const auto line = lines.lineAt(place);
  const auto row = layout.rowOf(place);
  const auto end = lines.start(line) + row.textStart() + row.textLength();
  // Where a line wraps, the end of one row and the start of the next are the same place, and the
  // cursor would be drawn at the start of the next row. So it stops one letter earlier.
  return end == lines.end(line) ? end : previous(layout, end, QTextLayout::SkipCharacters);
}

}  // namespace

qsizetype movedPlace(LyricsLayout& layout, qsizetype place, LyricsMove move, double column) {
  switch (move) {
    case LyricsMove::Left:
      return sideways(layout, place, false, QTextLayout::SkipCharacters);
    case LyricsMove::Right:
      return sideways(layout, place, true, QTextLayout::SkipCharacters);
    case LyricsMove::WordLeft:
      return sideways(layout, place, false, QTextLayout::SkipWords);
    case LyricsMove::WordRight:
      return sideways(layout, place, true, QTextLayout::SkipWords);
    case LyricsMove::Up:
      return upOrDown(layout, place, false, column);
    case LyricsMove::Down:
      return upOrDown(layout, place, true, column);
    case LyricsMove::RowStart:
      return rowStart(layout, place);
    case LyricsMove::RowEnd:
      return rowEnd(layout, place);
    case LyricsMove::Start:
      return 0;
    case LyricsMove::End:
      break;
  }
  return layout.lines().text().size();
}

}  // namespace Corvella
