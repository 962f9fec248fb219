#include "platform/appkit/NSProgressIndicator.h"

#include <cmath>

NSProgressIndicator::NSProgressIndicator(NSRect frame) : NSView(frame) {}

NSProgressIndicator::NSProgressIndicator(const NSCoder& coder)
    : NSView(coder),
      range_(coder.decodeDoubleForKey("minValue"), coder.decodeDoubleForKey("maxValue", 100)),
      value_(coder.decodeDoubleForKey("doubleValue")) {}

void NSProgressIndicator::setMaxValue(double maxValue) {
  if (range_.setMaxValue(maxValue)) setNeedsDisplay(true);
}

void NSProgressIndicator::setDoubleValue(double value) {
  store(value_, std::isnan(value) ? minValue() : value);
}
