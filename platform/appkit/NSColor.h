#pragma once

#include <string_view>

#include "platform/foundation/NSCoder.h"

/// A colour; each part is 0..1, and the colours are not multiplied by alpha.
struct NSColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  static constexpr NSColor colorWithWhite(double white, double alpha) {
    return {.red = white, .green = white, .blue = white, .alpha = alpha};
  }
  static constexpr NSColor lightGrayColor() { return colorWithWhite(2.0 / 3, 1); }
  /// The colour of texts, as on a dark ground, where widgets are shown.
  static constexpr NSColor labelColor() { return colorWithWhite(1, 0.85); }

  /// Reads the child `key`: its "name" (labelColor, lightGrayColor), or "white" and "alpha", or
  /// "red", "green", "blue" and "alpha"; `otherwise` where there is no child.
  static NSColor decodeForKey(const NSCoder& coder, std::string_view key, NSColor otherwise);

  friend bool operator==(const NSColor&, const NSColor&) = default;
};
