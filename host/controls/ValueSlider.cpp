#include "host/controls/ValueSlider.h"

#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyle>
#include <algorithm>
#include <cmath>

#include "host/controls/Theme.h"

namespace Corvella {

namespace {

constexpr double kThumb = 14;  // Its width and height, in pixels.

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
  setAttribute(Qt::WA_Hover);
  connect(this, &QSlider::actionTriggered, this, &ValueSlider::askForStep);
}

/// Qt calls this when the thumb stands at its new place and the value has not followed yet. At the
/// end of the range the thumb does not move, so the change is told by the kind of step.
void ValueSlider::askForStep(int action) {
  if (isSliderDown() || letsGo_) return;
  int change = sliderPosition() - value();
  if (action == SliderSingleStepAdd) change = singleStep();
  if (action == SliderSingleStepSub) change = -singleStep();
  if (action == SliderPageStepAdd) change = pageStep();
  if (action == SliderPageStepSub) change = -pageStep();
  if (change == 0) return;
  setSliderPosition(value());
  emit stepWanted(change);
}

void ValueSlider::display(const SliderContent& content) {
  const QSignalBlocker quiet(this);
  setTracking(content.continuous);
  setRange(wholeNumber(content.minValue), wholeNumber(content.maxValue));
  setValue(wholeNumber(content.value));
}

void ValueSlider::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  const auto x = event->position().x();
  const auto held = thumb();
  grip_ = held.contains(event->position()) ? x - held.center().x() : 0;
  setSliderDown(true);
  moveTo(x);
}

void ValueSlider::mouseMoveEvent(QMouseEvent* event) {
  if (isSliderDown()) moveTo(event->position().x());
}

void ValueSlider::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) letGo();
}

void ValueSlider::hideEvent(QHideEvent* event) {
  QSlider::hideEvent(event);
  letGo();
}

/// A slider that is hidden or disabled under the user's finger hears of no release.
void ValueSlider::changeEvent(QEvent* event) {
  QSlider::changeEvent(event);
  if (event->type() == QEvent::EnabledChange && !isEnabled()) letGo();
}

void ValueSlider::letGo() {
  letsGo_ = true;
  setSliderDown(false);
  letsGo_ = false;
}

QRectF ValueSlider::thumb() const {
  const auto share =
      maximum() > minimum() ? 1.0 * (sliderPosition() - minimum()) / (maximum() - minimum()) : 0;
  return {share * (width() - kThumb), (height() - kThumb) / 2.0, kThumb, kThumb};
}

void ValueSlider::moveTo(double x) {
  const auto room = wholeNumber(width() - kThumb);
  const auto place = wholeNumber(x - grip_ - kThumb / 2);
  setSliderPosition(QStyle::sliderValueFromPosition(minimum(), maximum(), place, room));
}

void ValueSlider::paintEvent(QPaintEvent* /*event*/) {
  constexpr double kThickness = 4;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto held = thumb();
  QRectF groove(kThumb / 4, (height() - kThickness) / 2, width() - kThumb / 2, kThickness);
  theme::fillRounded(painter, groove, kThickness / 2,
                     isEnabled() ? theme::groove() : theme::faintGroove());
  groove.setRight(held.center().x());
  theme::fillRounded(painter, groove, kThickness / 2,
                     isEnabled() ? theme::accent() : theme::faintText());
  const auto thumbColor = underMouse() ? QColor(Qt::white) : theme::text();
  theme::fillRounded(painter, held, kThumb / 2, isEnabled() ? thumbColor : theme::faintText());
  if (hasFocus()) theme::paintFocusRing(painter, rect());
}

}  // namespace Corvella
