#include "host/controls/LyricsSelection.h"

#include <QTextBoundaryFinder>
#include <algorithm>

namespace Corvella {

LyricsSelection::Range LyricsSelection::range() const {
  return {.start = std::min(anchor_, cursor_), .end = std::max(anchor_, cursor_)};
}

QString LyricsSelection::text() const {
  const auto [start, end] = range();
  return layout_.lines().text().sliced(start, end - start);
}

void LyricsSelection::select(qsizetype anchor, qsizetype cursor) {
  const auto size = layout_.lines().text().size();
  anchor_ = std::clamp<qsizetype>(anchor, 0, size);
  cursor_ = std::clamp<qsizetype>(cursor, 0, size);
  column_.reset();
}

void LyricsSelection::begin(QPointF point, Unit unit) {
  unit_ = unit;
  origin_ = unitAt(point);
  select(origin_.start, origin_.end);
}

void LyricsSelection::hold() {
  unit_ = Unit::Letter;
  origin_ = {.start = anchor_, .end = anchor_};
}

void LyricsSelection::dragTo(QPointF point) {
  const auto [start, end] = unitAt(point);
  if (start < origin_.start) return select(origin_.end, start);
  select(origin_.start, std::max(origin_.end, end));
}

LyricsSelection::Range LyricsSelection::unitAt(QPointF point) const {
  const auto place = layout_.placeAt(point, QTextLine::CursorBetweenCharacters);
  switch (unit_) {
    case Unit::Word:
      return wordAt(point);
    case Unit::Line: {
      const auto& lines = layout_.lines();
      const auto line = lines.lineAt(place);
      return {.start = lines.start(line), .end = lines.end(line)};
    }
    case Unit::Letter:
      break;
  }
  return {.start = place, .end = place};
}

LyricsSelection::Range LyricsSelection::wordAt(QPointF point) const {
  const auto place = layout_.placeAt(point, QTextLine::CursorOnCharacter);
  const auto& lines = layout_.lines();
  const auto line = lines.lineAt(place);
  const auto text = lines.line(line);
  QTextBoundaryFinder words(QTextBoundaryFinder::Word, text);
  words.setPosition(std::min(place - lines.start(line) + 1, text.size()));
  const auto end = words.isAtBoundary() ? words.position() : words.toNextBoundary();
  const auto start = std::max<qsizetype>(words.toPreviousBoundary(), 0);
  return {.start = lines.start(line) + start, .end = lines.start(line) + end};
}

void LyricsSelection::extend(LyricsMove move) {
  const bool keepsColumn = move == LyricsMove::Up || move == LyricsMove::Down;
  if (!keepsColumn) column_.reset();
  if (keepsColumn && !column_) column_ = layout_.caretAt(cursor_).x();
  cursor_ = movedPlace(layout_, cursor_, move, column_.value_or(0));
}

}  // namespace Corvella
