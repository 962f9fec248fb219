#pragma once

#include <string_view>

#include "platform/appkit/NSGeometry.h"

class NSFont;

/// Lays texts out to tell how large they are. The host brings the implementation, which agrees with
/// how it draws them.
class NSTextMeasurer {
 public:
  virtual ~NSTextMeasurer() = default;

  /// The size in points of the UTF-8 `text`, whole, its lines broken between words at `width`
  /// points and at its own line ends. `font` is null for texts that have none. To be
  /// called on the main queue.
  virtual NSSize measure(std::string_view text, const NSFont* font, double width) const = 0;
};
