#include "host/Theme.h"

namespace Corvella::theme {

QString styleSheet() {
  return R"(
    * { color: #f2f2f4; }
    QScrollArea, #scrolled { background: transparent; border: none; }
    #card { background: #2b2b31; border-radius: 12px; }
    #date { font-size: 15px; font-weight: bold; }
    QPushButton {
      background: rgba(255, 255, 255, 26); border: 2px solid transparent;
      border-radius: 8px; padding: 0px;
    }
    QPushButton:hover { background: rgba(255, 255, 255, 46); }
    QPushButton:pressed { background: rgba(255, 255, 255, 16); }
    QPushButton:disabled { color: #8e8e95; background: rgba(255, 255, 255, 10); }
    QPushButton:focus { border-color: #6cb2ff; }
    #close { background: transparent; font-size: 13px; border-radius: 12px; color: #c4c4ca; }
    #close:hover { background: rgba(255, 255, 255, 40); color: #ffffff; }
    QSlider { background: transparent; border: 2px solid transparent; border-radius: 8px; }
    QSlider:focus { border-color: #6cb2ff; }
    QSlider::groove:horizontal {
      height: 4px; border-radius: 2px; background: rgba(255, 255, 255, 56); margin: 0px 2px;
    }
    QSlider::sub-page:horizontal { background: #6cb2ff; border-radius: 2px; margin: 0px 2px; }
    QSlider::handle:horizontal {
      width: 14px; height: 14px; margin: -5px -2px; border-radius: 7px; background: #f2f2f4;
    }
    QSlider::handle:horizontal:hover { background: #ffffff; }
    QTextEdit {
      background: transparent; border: none;
      selection-background-color: #2f6db5; selection-color: #ffffff;
    }
    QScrollBar:vertical { background: transparent; width: 8px; margin: 2px 0px; }
    QScrollBar::handle:vertical { background: rgba(255, 255, 255, 70); border-radius: 3px; min-height: 32px; }
    QScrollBar::handle:vertical:hover { background: rgba(255, 255, 255, 110); }
    QScrollBar::add-line, QScrollBar::sub-line { height: 0px; }
    QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
    QToolTip {
      background: #3a3a41; color: #f2f2f4; border: 1px solid #55555c; padding: 3px; font-size: 12px;
    }
  )";
}

void paintFocusRing(QPainter& painter, const QRect& area) {
  constexpr double kWidth = 2;
  painter.setPen(QPen(accent(), kWidth));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRectF(area).adjusted(1, 1, -1, -1), 6, 6);
}

}  // namespace Corvella::theme
