#include "host/panel/PlayerButton.h"

#include <QEvent>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <algorithm>

#include "host/controls/Theme.h"

namespace Corvella {

namespace {

constexpr int kTextSize = 12;
constexpr int kArrowRoom = 16;  // Right of the text.

}  // namespace

PlayerButton::PlayerButton(QWidget* parent) : QAbstractButton(parent) {
  QFont font;
  font.setPixelSize(kTextSize);
  setFont(font);
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
  setCursor(Qt::PointingHandCursor);
  setToolTip("Choose the player (S)");
}

void PlayerButton::show(const QString& text, bool isNotice) {
  if (text == this->text() && isNotice == isNotice_) return;
  isNotice_ = isNotice;
  setText(text);
  setAccessibleName(text);
  setAccessibleDescription("Player");
  fitInto(mostWidth_);
  update();
}

void PlayerButton::fitInto(int width) {
  mostWidth_ = width;
  const auto needed = QFontMetrics(font()).horizontalAdvance(text()) + kArrowRoom;
  resize(std::min(needed, mostWidth_), kHeight);
}

void PlayerButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto quiet = underMouse() || hasFocus() ? theme::text() : theme::dimmed();
  const auto color = isNotice_ ? theme::notice() : quiet;
  painter.setPen(color);
  const QRect room = rect().adjusted(0, 0, -kArrowRoom + 2, 0);
  painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                   painter.fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
  QPainterPath arrow;
  arrow.addPolygon(QPolygonF{QPointF(-3, -1.5), QPointF(3, -1.5), QPointF(0, 2)});
  painter.translate(width() - kArrowRoom / 2.0 + 1, height() / 2.0);
  painter.fillPath(arrow, color);
  painter.resetTransform();
  if (hasFocus()) theme::paintFocusRing(painter, rect());
}

bool PlayerButton::event(QEvent* event) {
  // A name that is cut short is told in full.
  const bool isCut = QFontMetrics(font()).horizontalAdvance(text()) + kArrowRoom > width();
  if (event->type() == QEvent::ToolTip && isCut) {
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text() + "\n" + toolTip());
    return true;
  }
  return QAbstractButton::event(event);
}

}  // namespace Corvella
