#include "host/controls/PositionBar.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "host/controls/Theme.h"

namespace Corvella {

namespace {

QString timeText(double seconds) {
  const auto whole = static_cast<long long>(std::isfinite(seconds) ? std::min(seconds, 1e9) : 0);
  return QString("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QChar(u'0'));
}

}  // namespace

void PositionBar::display(const ProgressContent& content) {
  content_ = content;
  update();
}

double PositionBar::rangeValue() const {
  return fraction() * rangeMaximum();
}

double PositionBar::rangeMaximum() const {
  return std::max(0.0, content_.maxValue - content_.minValue);
}

QString PositionBar::valueText() const {
  // A stream has no end.
  if (!(rangeMaximum() > 0)) return timeText(std::max(0.0, content_.value - content_.minValue));
  return QString("%1 of %2").arg(timeText(rangeValue()), timeText(rangeMaximum()));
}

double PositionBar::fraction() const {
  const auto length = rangeMaximum();
  if (!(length > 0) || !std::isfinite(content_.value)) return 0;
  return std::clamp((content_.value - content_.minValue) / length, 0.0, 1.0);
}

bool PositionBar::event(QEvent* event) {
  // Composed when it is asked for, because the position changes each second.
  if (event->type() != QEvent::ToolTip) return RangeWidget::event(event);
  QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), valueText(), this);
  return true;
}

void PositionBar::paintEvent(QPaintEvent* /*event*/) {
  constexpr double kThickness = 4;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  QRectF bar(0, (height() - kThickness) / 2, width(), kThickness);
  painter.setBrush(theme::groove());
  painter.drawRoundedRect(bar, kThickness / 2, kThickness / 2);
  if (fraction() <= 0) return;
  bar.setWidth(std::max(kThickness, width() * fraction()));
  painter.setBrush(theme::accent());
  painter.drawRoundedRect(bar, kThickness / 2, kThickness / 2);
}

}  // namespace Corvella
