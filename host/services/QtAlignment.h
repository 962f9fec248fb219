#pragma once

#include <Qt>

#include "platform/appkit/NSText.h"

namespace Corvella {

/// The side on which a line of text stands: one that reads from right to left starts on the right.
inline Qt::Alignment qtAlignment(NSTextAlignment alignment, bool rightToLeft) {
  if (alignment == NSTextAlignmentCenter) return Qt::AlignHCenter;
  const bool right = (alignment == NSTextAlignmentRight) != rightToLeft;
  return (right ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute;
}

}  // namespace Corvella
