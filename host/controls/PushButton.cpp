#include "host/controls/PushButton.h"

#include <QKeyEvent>
#include <QPainter>

#include "host/controls/ButtonSign.h"
#include "host/controls/Theme.h"
#include "host/services/QtFonts.h"

namespace Corvella {

PushButton::PushButton(QWidget* parent, Look look) : QPushButton(parent), look_(look) {
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
}

void PushButton::display(const ButtonContent& content) {
  setFont(qtFont(content.font.get()));
  setEnabled(content.enabled);
  sign_ = buttonSign(content.title);
  title_ = sign_.isEmpty() ? QString::fromStdString(content.title) : QString();
  // Qt takes a single ampersand in the text of a button for the mark of a shortcut.
  setText(QString(title_).replace(u'&', "&&"));
  update();
}

void PushButton::paintEvent(QPaintEvent* /*event*/) {
  constexpr double kCornerRadius = 8;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  theme::fillRounded(painter, rect(), kCornerRadius, backgroundColor());
  if (hasFocus()) theme::paintFocusRing(painter, rect());
  const auto color = isEnabled() ? theme::text() : theme::faintText();
  painter.setPen(color);
  painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, title_);
  painter.translate(QRectF(rect()).center() - sign_.boundingRect().center());
  painter.fillPath(sign_, color);
}

void PushButton::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return click();
  // With these keys Qt would move the focus from button to button; here they set the volume.
  const bool isVolume = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
  isVolume ? event->ignore() : QPushButton::keyPressEvent(event);
}

QColor PushButton::backgroundColor() const {
  const bool flat = look_ == Look::Flat;
  constexpr int kFaint = 10;
  constexpr int kPressed = 16;
  constexpr int kUsual = 26;
  constexpr int kHovered = 46;
  QColor color = Qt::white;
  if (!isEnabled()) {
    color.setAlpha(flat ? 0 : kFaint);
  } else if (isDown()) {
    color.setAlpha(kPressed);
  } else if (underMouse()) {
    color.setAlpha(kHovered);
  } else {
    color.setAlpha(flat ? 0 : kUsual);
  }
  return color;
}

}  // namespace Corvella
