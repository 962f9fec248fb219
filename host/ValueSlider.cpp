#include "host/ValueSlider.h"

#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSlider>
#include <algorithm>
#include <cmath>

namespace Corvella {

namespace {

int wholeNumber(double number) {
  constexpr double kLargest = 1'000'000;
  if (std::isnan(number)) return 0;
  return static_cast<int>(std::lround(std::clamp(number, -kLargest, kLargest)));
}

}  // namespace

ValueSlider::ValueSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  constexpr int kStep = 5;
  setSingleStep(kStep);
  setPageStep(2 * kStep);
  setFocusPolicy(Qt::TabFocus);
}

void ValueSlider::display(const SliderContent& content) {
  const QSignalBlocker quiet(this);
  setRange(wholeNumber(content.minValue), wholeNumber(content.maxValue));
  setValue(wholeNumber(content.value));
}

void ValueSlider::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  const auto x = event->position().x();
  const QRectF held(thumb());
  grip_ = held.contains(event->position()) ? x - held.center().x() : 0;
  setSliderDown(true);
  moveTo(x);
}

void ValueSlider::mouseMoveEvent(QMouseEvent* event) {
  if (isSliderDown()) moveTo(event->position().x());
}

void ValueSlider::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) setSliderDown(false);
}

QRect ValueSlider::thumb() const {
  QStyleOptionSlider option;
  initStyleOption(&option);
  return style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
}

void ValueSlider::moveTo(double x) {
  const auto room = width() - thumb().width();
  const auto place = wholeNumber(x - grip_ - thumb().width() / 2.0);
  setSliderPosition(QStyle::sliderValueFromPosition(minimum(), maximum(), place, room));
}

}  // namespace Corvella
