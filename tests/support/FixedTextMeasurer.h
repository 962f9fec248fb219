#pragma once

#include <string_view>

#include "platform/appkit/NSTextMeasurer.h"

/// Every byte is 10 points wide and every line 12 points high, whatever the font. Lines break
/// anywhere; an empty text is one line high.
struct FixedTextMeasurer final : NSTextMeasurer {
  static constexpr double lineHeight = 12;

  NSSize measure(std::string_view text, const NSFont*, double width) const override {
    ++measurements;
    int lines = 1;
    double used = 0;
    for (const char c : text) {
      used += 10;
      if (c != '\n' && used <= width) continue;
      ++lines;
      used = c == '\n' ? 0 : 10;
    }
    return {.width = width, .height = lines * lineHeight};
  }

  mutable int measurements = 0;  ///< How often a text has been measured.
};
