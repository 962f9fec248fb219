#pragma once

#include <cstdint>

#include "platform/appkit/NSControl.h"
#include "platform/appkit/NSValueRange.h"

/// A control that shows a number within a range: what sliders and level indicators have in common.
/// The value always lies in the range; what is set beyond it, and NaN, is moved as `NSValueRange`
/// says. Lives on the main queue.
class NSRangeControl : public NSControl {
 public:
  double minValue() const { return range_.minValue(); }
  double maxValue() const { return range_.maxValue(); }
  /// Moves the value into the new range.
  void setMinValue(double minValue);
  void setMaxValue(double maxValue);

  double doubleValue() const { return value_; }
  void setDoubleValue(double value) { store(value_, range_.clamped(value)); }

  /// The value cut off after the decimal point.
  std::int64_t integerValue() const;
  void setIntegerValue(std::int64_t value);

 protected:
  NSRangeControl(NSRect frame, NSValueRange range);
  /// Reads "minValue", "maxValue" and "doubleValue" from the control's cell.
  NSRangeControl(const NSCoder& coder, NSValueRange otherwise);

 private:
  NSValueRange range_;
  double value_;
};
