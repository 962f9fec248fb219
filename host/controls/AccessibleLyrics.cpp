#include "host/controls/AccessibleLyrics.h"

#include <QTextLine>
#include <algorithm>

namespace Corvella {

AccessibleLyrics::AccessibleLyrics(LyricsView& view)
    : QAccessibleWidget(&view, QAccessible::StaticText), view_(view) {}

void* AccessibleLyrics::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
  return QAccessibleWidget::interface_cast(type);
}

QAccessible::State AccessibleLyrics::state() const {
  auto state = QAccessibleWidget::state();
  state.readOnly = true;
  state.selectableText = true;
  state.multiLine = true;
  return state;
}

QString AccessibleLyrics::text(QAccessible::Text kind) const {
  return kind == QAccessible::Value ? wholeText() : QAccessibleWidget::text(kind);
}

QString AccessibleLyrics::text(int startOffset, int endOffset) const {
  return wholeText().mid(startOffset, std::max(0, endOffset - startOffset));
}

int AccessibleLyrics::characterCount() const {
  return static_cast<int>(wholeText().size());
}

QRect AccessibleLyrics::characterRect(int offset) const {
  if (offset < 0 || offset >= characterCount()) return {};
  const auto here = view_.layout().caretAt(offset);
  const auto next = view_.layout().caretAt(offset + 1);
  const auto width = next.y() == here.y() ? next.x() - here.x() : 0;
  const QRectF letter(here.topLeft(), QSizeF(width, here.height()));
  return letter.normalized().toRect().translated(view_.mapToGlobal(QPoint()));
}

int AccessibleLyrics::offsetAtPoint(const QPoint& point) const {
  const auto place = view_.mapFromGlobal(point);
  if (!view_.rect().contains(place)) return -1;
  return static_cast<int>(view_.layout().placeAt(place, QTextLine::CursorOnCharacter));
}

QString AccessibleLyrics::attributes(int /*offset*/, int* startOffset, int* endOffset) const {
  *startOffset = 0;
  *endOffset = characterCount();
  return {};
}

int AccessibleLyrics::cursorPosition() const {
  return static_cast<int>(view_.selection().cursor());
}

void AccessibleLyrics::setCursorPosition(int position) {
  view_.select(position, position);
}

int AccessibleLyrics::selectionCount() const {
  return view_.selection().isEmpty() ? 0 : 1;
}

void AccessibleLyrics::selection(int selectionIndex, int* startOffset, int* endOffset) const {
  const auto selected = selectionIndex == 0 ? view_.selection().range() : LyricsSelection::Range();
  *startOffset = static_cast<int>(selected.start);
  *endOffset = static_cast<int>(selected.end);
}

void AccessibleLyrics::addSelection(int startOffset, int endOffset) {
  view_.select(startOffset, endOffset);
}

void AccessibleLyrics::setSelection(int selectionIndex, int startOffset, int endOffset) {
  if (selectionIndex == 0) view_.select(startOffset, endOffset);
}

void AccessibleLyrics::removeSelection(int selectionIndex) {
  if (selectionIndex == 0) view_.select(view_.selection().cursor(), view_.selection().cursor());
}

}  // namespace Corvella
