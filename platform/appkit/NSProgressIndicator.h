#pragma once

#include "platform/appkit/NSValueRange.h"
#include "platform/appkit/NSView.h"

/// A bar that fills up, 0..100 where nothing else is set. Lives on the main queue.
class NSProgressIndicator : public NSView {
 public:
  explicit NSProgressIndicator(NSRect frame = {});
  /// Reads "minValue", "maxValue" and "doubleValue".
  explicit NSProgressIndicator(const NSCoder& coder);

  double minValue() const { return range_.minValue(); }
  double maxValue() const { return range_.maxValue(); }
  /// NaN changes nothing.
  void setMaxValue(double maxValue);

  /// The value as it was set, also when it lies outside of the range: the range may follow later.
  double doubleValue() const { return value_; }
  /// NaN becomes the lowest value of the range.
  void setDoubleValue(double value);

 private:
  NSValueRange range_{0, 100};
  double value_ = 0;
};
