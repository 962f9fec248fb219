#include "platform/appkit/NSText.h"

NSTextAlignment NSDecodeTextAlignment(const NSCoder& coder) {
  return coder.decodeCaseForKey("alignment",
                                {{"left", NSTextAlignmentLeft},
                                 {"right", NSTextAlignmentRight},
                                 {"center", NSTextAlignmentCenter}},
                                NSTextAlignmentLeft);
}
