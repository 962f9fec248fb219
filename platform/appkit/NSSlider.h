#pragma once

#include "platform/appkit/NSRangeControl.h"

/// A knob on a track, 0..1 where nothing else is set. Lives on the main queue.
class NSSlider : public NSRangeControl {
 public:
  explicit NSSlider(NSRect frame = {});
  explicit NSSlider(const NSCoder& coder);

  /// Whether the action is to be sent while the knob is dragged, not only at the end.
  bool isContinuous() const { return continuous_; }

 private:
  bool continuous_ = true;
};
