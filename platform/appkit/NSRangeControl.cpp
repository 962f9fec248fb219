#include "platform/appkit/NSRangeControl.h"

#include <limits>

NSRangeControl::NSRangeControl(NSRect frame, NSValueRange range)
    : NSControl(frame), range_(range), value_(range.minValue()) {}

NSRangeControl::NSRangeControl(const NSCoder& coder, NSValueRange otherwise)
    : NSControl(coder),
      range_(coder.cell().decodeDoubleForKey("minValue", otherwise.minValue()),
             coder.cell().decodeDoubleForKey("maxValue", otherwise.maxValue())),
      value_(range_.clamped(coder.cell().decodeDoubleForKey("doubleValue"))) {}

void NSRangeControl::setMinValue(double minValue) {
  if (!range_.setMinValue(minValue)) return;
  setNeedsDisplay(true);
  setDoubleValue(value_);
}

void NSRangeControl::setMaxValue(double maxValue) {
  if (!range_.setMaxValue(maxValue)) return;
  setNeedsDisplay(true);
  setDoubleValue(value_);
}

std::int64_t NSRangeControl::integerValue() const {
  using Limits = std::numeric_limits<std::int64_t>;
  constexpr double beyond = 0x1p63;
  if (value_ >= beyond) return Limits::max();
  return value_ < -beyond ? Limits::min() : static_cast<std::int64_t>(value_);
}

void NSRangeControl::setIntegerValue(std::int64_t value) {
  setDoubleValue(static_cast<double>(value));
}
