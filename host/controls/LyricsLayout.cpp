#include "host/controls/LyricsLayout.h"

#include <algorithm>
#include <utility>

namespace Corvella {

namespace {

/// The row at that height, or the one nearest to it.
QTextLine rowAtHeight(const QTextLayout& layout, double height) {
  int row = 0;
  while (row + 1 < layout.lineCount() && layout.lineAt(row + 1).y() <= height) ++row;
  return layout.lineAt(row);
}

}  // namespace

LyricsLayout::LyricsLayout(LyricsLines lines, const QFont& font, NSTextAlignment alignment)
    : lines_(std::move(lines)), font_(font), alignment_(alignment) {}

void LyricsLayout::setWidth(double width) {
  if (width == width_) return;
  width_ = width;
  tops_ = {0};
  laidOut_.clear();
}

void LyricsLayout::advance(QDeadlineTimer deadline) {
  while (!isComplete()) {
    const TextParagraph next(lines_.line(knownLines()), font_, width_);
    tops_.push_back(tops_.back() + next.height());
    if (deadline.hasExpired()) return;
  }
}

qsizetype LyricsLayout::lineAtHeight(double height) const {
  const auto line = std::ranges::upper_bound(tops_, height) - tops_.begin() - 1;
  return std::clamp<qsizetype>(line, 0, std::max<qsizetype>(knownLines() - 1, 0));
}

const TextParagraph& LyricsLayout::paragraph(qsizetype line) {
  return laidOut_.try_emplace(line, lines_.line(line), font_, width_, alignment_).first->second;
}

void LyricsLayout::keepOnly(qsizetype first, qsizetype last) {
  std::erase_if(laidOut_,
                [=](const auto& entry) { return entry.first < first || entry.first > last; });
}

qsizetype LyricsLayout::placeAt(QPointF point, QTextLine::CursorPosition kind) {
  if (knownLines() == 0) return 0;
  const auto line = lineAtHeight(point.y());
  const auto& layout = paragraph(line).layout();
  const auto row = rowAtHeight(layout, point.y() - top(line));
  // At and beyond the ends of a row from right to left Qt takes one end for the other.
  constexpr double kWithin = 0.5;
  const auto text = row.naturalTextRect();
  const auto x = std::max(text.left() + kWithin, std::min(point.x(), text.right() - kWithin));
  auto place = row.xToCursor(x, kind);
  // The end of a row that wraps is the start of the next one, where the cursor would be shown.
  const bool wraps = row.lineNumber() + 1 < layout.lineCount();
  const bool isAtEnd = place == row.textStart() + row.textLength();
  if (wraps && isAtEnd) place = layout.previousCursorPosition(place);
  return lines_.start(line) + place;
}

QTextLine LyricsLayout::rowOf(qsizetype place) {
  const auto line = lines_.lineAt(place);
  const auto inLine = static_cast<int>(place - lines_.start(line));
  return paragraph(line).layout().lineForTextPosition(inLine);
}

QRectF LyricsLayout::caretAt(qsizetype place) {
  const auto line = lines_.lineAt(place);
  if (line >= knownLines()) return {};
  const auto row = rowOf(place);
  const auto x = row.cursorToX(static_cast<int>(place - lines_.start(line)));
  return {x, top(line) + row.y(), 1, row.height()};
}

}  // namespace Corvella
