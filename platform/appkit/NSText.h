#pragma once

#include "platform/foundation/NSCoder.h"

/// Where the lines of a text stand.
enum NSTextAlignment : unsigned {
  NSTextAlignmentLeft = 0,
  NSTextAlignmentRight = 1,
  NSTextAlignmentCenter = 2,
};

/// Reads "left", "right" or "center" from the value "alignment"; left where there is none.
NSTextAlignment NSDecodeTextAlignment(const NSCoder& coder);
