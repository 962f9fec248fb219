#include "host/controls/Theme.h"

namespace Corvella::theme {

QPalette palette() {
  const auto ground = card();
  QPalette palette(text(), ground, ground.lighter(), ground.darker(), ground.lighter(120), text(),
                   text(), ground, ground);
  palette.setColor(QPalette::Highlight, QColor(0x2f, 0x6d, 0xb5));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Disabled, QPalette::Text, faintText());
  palette.setColor(QPalette::Disabled, QPalette::WindowText, faintText());
  return palette;
}

QPalette toolTipPalette() {
  QPalette tip = palette();
  tip.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3a, 0x41));
  tip.setColor(QPalette::ToolTipText, text());
  return tip;
}

QString scrollBarStyleSheet() {
  return R"(
    QScrollBar:vertical { background: transparent; width: 8px; margin: 2px 0px; }
    QScrollBar::handle:vertical {
      background: rgba(255, 255, 255, 70); border-radius: 3px; min-height: 32px;
    }
    QScrollBar::handle:vertical:hover { background: rgba(255, 255, 255, 110); }
    QScrollBar::add-line, QScrollBar::sub-line { height: 0px; }
    QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
  )";
}

void fillRounded(QPainter& painter, const QRectF& area, double radius, const QColor& color) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(color);
  painter.drawRoundedRect(area, radius, radius);
}

void paintFocusRing(QPainter& painter, const QRect& area) {
  constexpr double kWidth = 2;
  painter.setPen(QPen(accent(), kWidth));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRectF(area).adjusted(1, 1, -1, -1), 6, 6);
}

}  // namespace Corvella::theme
