#include "host/panel/PlayerButton.h"

#include <QEvent>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QTextDocument>
#include <QToolTip>

#include "host/controls/Theme.h"

namespace Corvella {

namespace {

constexpr int kTextSize = 12;
constexpr int kArrowRoom = 16;  // After the text.
constexpr int kArrowGap = 2;    // Of that, what the text may reach into.

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
  update();
}

QSize PlayerButton::sizeHint() const {
  return {QFontMetrics(font()).horizontalAdvance(text()) + kArrowRoom, kHeight};
}

void PlayerButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto quiet = underMouse() || hasFocus() ? theme::text() : theme::dimmed();
  const auto color = isNotice_ ? theme::notice() : quiet;
  painter.setPen(color);
  const auto mirrored = [this](const QRect& area) {
    return QStyle::visualRect(layoutDirection(), rect(), area);
  };
  const int textWidth = width() - kArrowRoom;
  const auto room = mirrored({0, 0, textWidth + kArrowGap, height()});
  painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                   painter.fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
  QPainterPath arrow;
  arrow.addPolygon(QPolygonF{QPointF(-3, -1.5), QPointF(3, -1.5), QPointF(0, 2)});
  painter.translate(QRectF(mirrored({textWidth + 1, 0, kArrowRoom, height()})).center());
  painter.fillPath(arrow, color);
  painter.resetTransform();
  if (hasFocus()) theme::paintFocusRing(painter, rect());
}

bool PlayerButton::event(QEvent* event) {
  // A name that is cut short is told in full.
  if (event->type() == QEvent::ToolTip && sizeHint().width() > width()) {
    // A name that looks like markup would be taken for it.
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                       Qt::convertFromPlainText(text() + "\n" + toolTip(), Qt::WhiteSpaceNormal));
    return true;
  }
  return QAbstractButton::event(event);
}

}  // namespace Corvella
