#include "host/controls/LyricsView.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDeadlineTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <array>
#include <utility>

#include "host/services/QtColors.h"
#include "host/services/QtFonts.h"

namespace Corvella {

namespace {

struct MoveKey {
  QKeySequence::StandardKey key;
  LyricsMove move;
};

constexpr std::array kMoveKeys{
    MoveKey{QKeySequence::SelectPreviousChar, LyricsMove::Left},
    MoveKey{QKeySequence::SelectNextChar, LyricsMove::Right},
    MoveKey{QKeySequence::SelectPreviousWord, LyricsMove::WordLeft},
    MoveKey{QKeySequence::SelectNextWord, LyricsMove::WordRight},
    MoveKey{QKeySequence::SelectPreviousLine, LyricsMove::Up},
    MoveKey{QKeySequence::SelectNextLine, LyricsMove::Down},
    MoveKey{QKeySequence::SelectStartOfLine, LyricsMove::RowStart},
    MoveKey{QKeySequence::SelectEndOfLine, LyricsMove::RowEnd},
    MoveKey{QKeySequence::SelectStartOfDocument, LyricsMove::Start},
    MoveKey{QKeySequence::SelectEndOfDocument, LyricsMove::End},
};

}  // namespace

LyricsView::LyricsView(QWidget* parent) : QWidget(parent) {
  setCursor(Qt::IBeamCursor);
}

void LyricsView::display(const TextContent& content) {
  const auto font = qtFont(content.font.get());
  const auto color = qtColor(content.color);
  const bool isAnother = content.text != text_;
  const bool looksOther = font != font_ || content.alignment != alignment_;
  font_ = font;
  alignment_ = content.alignment;
  if (color != std::exchange(color_, color)) update();
  if (isAnother) {
    replaceText(content.text);
  } else if (looksOther) {
    replaceLayout(layout_.lines());
  }
  takeFocusWhenThereIsText();
}

void LyricsView::replaceText(const std::string& text) {
  text_ = text;
  const auto before = layout_.lines().text();
  selection_.select(0, 0);
  replaceLayout(LyricsLines(text));
  QAccessibleTextUpdateEvent changed(this, 0, before, layout_.lines().text());
  QAccessible::updateAccessibility(&changed);
  if (!text_.empty()) emit textReplaced();
}

void LyricsView::replaceLayout(LyricsLines lines) {
  layout_ = LyricsLayout(std::move(lines), font_, alignment_);
  layout_.setWidth(width());
  update();
  layOutMore();
}

void LyricsView::setSlice(std::chrono::milliseconds slice) {
  slice_ = slice;
  layOutMore();
}

/// Lines whose heights become known may be in sight, so their part of the view is painted anew.
void LyricsView::layOutMore() {
  const auto known = layout_.knownHeight();
  layout_.advance(QDeadlineTimer(slice_));
  const QRectF added(0, known, width(), layout_.knownHeight() - known);
  update(added.toAlignedRect());
  const bool isDone = layout_.isComplete() && unpainted_.isEmpty();
  isDone ? nextSlice_.stop() : nextSlice_.start(0, this);
}

void LyricsView::timerEvent(QTimerEvent* event) {
  if (event->timerId() != nextSlice_.timerId()) return QWidget::timerEvent(event);
  update(std::exchange(unpainted_, {}));
  layOutMore();
}

void LyricsView::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  painter.setPen(color_);
  const auto exposed = event->rect();
  const auto inSight = exposed | visibleRegion().boundingRect();
  layout_.keepOnly(layout_.lineAtHeight(inSight.top()), layout_.lineAtHeight(inSight.bottom()));
  const QDeadlineTimer deadline(slice_);
  const auto kept = layout_.laidOutLines();
  for (auto line = layout_.lineAtHeight(exposed.top());
       line < layout_.knownLines() && layout_.top(line) <= exposed.bottom(); ++line) {
    const bool isTime = !deadline.hasExpired() || layout_.laidOutLines() == kept;
    if (!isTime && !layout_.isLaidOut(line)) return paintLater(exposed);
    paintLine(painter, line, exposed);
  }
}

void LyricsView::paintLater(const QRect& area) {
  unpainted_ |= area;
  nextSlice_.start(0, this);
}

void LyricsView::paintLine(QPainter& painter, qsizetype line, const QRect& exposed) {
  const QPointF corner(0, layout_.top(line));
  const auto& layout = layout_.paragraph(line).layout();
  layout.draw(&painter, corner, {selectedIn(line)}, exposed);
  const auto& lines = layout_.lines();
  if (!hasFocus() || lines.lineAt(selection_.cursor()) != line) return;
  layout.drawCursor(&painter, corner, static_cast<int>(selection_.cursor() - lines.start(line)));
}

/// The selected part of a line; its length is 0 when the line is not selected.
QTextLayout::FormatRange LyricsView::selectedIn(qsizetype line) const {
  const auto& lines = layout_.lines();
  const auto [selectionStart, selectionEnd] = selection_.range();
  const auto start = std::max(selectionStart, lines.start(line));
  const auto end = std::max(start, std::min(selectionEnd, lines.end(line)));
  QTextLayout::FormatRange range;
  range.start = static_cast<int>(start - lines.start(line));
  range.length = static_cast<int>(end - start);
  range.format.setBackground(palette().highlight());
  range.format.setForeground(palette().highlightedText());
  return range;
}

void LyricsView::resizeEvent(QResizeEvent* /*event*/) {
  layout_.setWidth(width());
  layOutMore();
  takeFocusWhenThereIsText();
}

template <typename Change>
void LyricsView::changeSelection(Change change) {
  change();
  update();
  const auto [start, end] = selection_.range();
  QAccessibleTextSelectionEvent changed(this, static_cast<int>(start), static_cast<int>(end));
  changed.setCursorPosition(static_cast<int>(selection_.cursor()));
  QAccessible::updateAccessibility(&changed);
}

void LyricsView::keyPressEvent(QKeyEvent* event) {
  const auto* const moves = std::ranges::find_if(
      kMoveKeys, [event](const MoveKey& key) { return event->matches(key.key); });
  if (moves != kMoveKeys.end()) {
    changeSelection([&] { selection_.extend(moves->move); });
    emit cursorMoved(layout_.caretAt(selection_.cursor()).toAlignedRect());
    offerSelection();
  } else if (event->matches(QKeySequence::SelectAll)) {
    selectAll();
  } else if (event->matches(QKeySequence::Copy)) {
    copy();
  } else {
    event->ignore();
  }
}

void LyricsView::mousePressEvent(QMouseEvent* event) {
  using Unit = LyricsSelection::Unit;
  if (event->button() != Qt::LeftButton) return event->ignore();
  changeSelection([&] {
    if (event->modifiers().testFlag(Qt::ShiftModifier)) {
      selection_.hold();
      selection_.dragTo(event->position());
    } else {
      selection_.begin(event->position(), isThirdClick(*event) ? Unit::Line : Unit::Letter);
    }
  });
}

void LyricsView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  doubleClick_ = {.milliseconds = event->timestamp(), .place = event->position()};
  changeSelection([&] { selection_.begin(event->position(), LyricsSelection::Unit::Word); });
}

bool LyricsView::isThirdClick(const QMouseEvent& event) const {
  if (!doubleClick_) return false;
  const auto time = event.timestamp() - doubleClick_->milliseconds;
  const auto way = (event.position() - doubleClick_->place).toPoint().manhattanLength();
  return time <= static_cast<quint64>(QApplication::doubleClickInterval()) &&
         way < QApplication::startDragDistance();
}

void LyricsView::mouseMoveEvent(QMouseEvent* event) {
  if (!event->buttons().testFlag(Qt::LeftButton)) return event->ignore();
  changeSelection([&] { selection_.dragTo(event->position()); });
  emit cursorMoved(layout_.caretAt(selection_.cursor()).toAlignedRect());
}

void LyricsView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  offerSelection();
}

void LyricsView::contextMenuEvent(QContextMenuEvent* event) {
  menu_ = std::make_unique<QMenu>(this);
  auto* const copying = menu_->addAction("&Copy", QKeySequence::Copy, this, &LyricsView::copy);
  copying->setEnabled(!selection_.isEmpty());
  menu_->addAction("Select &All", QKeySequence::SelectAll, this, &LyricsView::selectAll);
  menu_->popup(event->globalPos());
}

void LyricsView::copy() const {
  if (!selection_.isEmpty()) QApplication::clipboard()->setText(selection_.text());
}

/// On X11 the middle mouse button pastes what is selected, without its having been copied.
void LyricsView::offerSelection() const {
  auto& clipboard = *QApplication::clipboard();
  if (selection_.isEmpty() || !clipboard.supportsSelection()) return;
  clipboard.setText(selection_.text(), QClipboard::Selection);
}

void LyricsView::selectAll() {
  select(0, layout_.lines().text().size());
  offerSelection();
}

void LyricsView::select(qsizetype anchor, qsizetype cursor) {
  changeSelection([&] { selection_.select(anchor, cursor); });
}

void LyricsView::takeFocusWhenThereIsText() {
  setFocusPolicy(height() > 0 && !text_.empty() ? Qt::StrongFocus : Qt::NoFocus);
}

}  // namespace Corvella
