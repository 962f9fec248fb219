#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "platform/appkit/NSTextMeasurer.h"

/// Every byte is 10 points wide and every line 12 points high, whatever the font. Lines break
/// anywhere; an empty text is one line high.
class FixedTextMeasurer final : public NSTextMeasurer {
 public:
  static constexpr double characterWidth = 10;
  static constexpr double lineHeight = 12;

  NSSize measure(std::string_view text, const NSFont*, double width) const override {
    ++measurements_;
    const auto perLine = std::max<std::size_t>(1, static_cast<std::size_t>(width / characterWidth));
    std::size_t lines = 0;
    std::size_t longest = 0;
    for (std::size_t start = 0; start <= text.size();) {
      const auto end = std::min(text.find('\n', start), text.size());
      const auto characters = end - start;
      lines += std::max<std::size_t>(1, (characters + perLine - 1) / perLine);
      longest = std::max(longest, std::min(characters, perLine));
      start = end + 1;
    }
    return {.width = static_cast<double>(longest) * characterWidth,
            .height = static_cast<double>(lines) * lineHeight};
  }

  /// How often a text has been measured.
  int measurements() const { return measurements_; }

 private:
  mutable int measurements_ = 0;
};
