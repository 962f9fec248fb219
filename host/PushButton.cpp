#include "host/PushButton.h"

#include <QStyleOptionButton>
#include <QStylePainter>

#include "host/QtFonts.h"
#include "host/TransportSign.h"

namespace Corvella {

PushButton::PushButton(QWidget* parent) : QPushButton(parent) {
  setFocusPolicy(Qt::TabFocus);
}

void PushButton::display(const ButtonContent& content) {
  setFont(qtFont(content.font.get()));
  // An ampersand is a sign like any other.
  setText(QString::fromStdString(content.title).replace(u'&', "&&"));
  setEnabled(content.enabled);
  sign_ = transportSign(content.title);
  update();
}

void PushButton::paintEvent(QPaintEvent* event) {
  if (sign_.isEmpty()) return QPushButton::paintEvent(event);
  QStylePainter painter(this);
  QStyleOptionButton option;
  initStyleOption(&option);
  option.text.clear();
  painter.drawControl(QStyle::CE_PushButton, option);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(QRectF(rect()).center() - sign_.boundingRect().center());
  painter.fillPath(sign_, option.palette.color(QPalette::ButtonText));
}

}  // namespace Corvella
