#include "platform/appkit/NSSlider.h"

NSSlider::NSSlider(NSRect frame) : NSRangeControl(frame, {0, 1}) {}

NSSlider::NSSlider(const NSCoder& coder)
    : NSRangeControl(coder, {0, 1}), continuous_(coder.cell().decodeBoolForKey("continuous")) {}
