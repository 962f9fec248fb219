#pragma once

#include <string_view>

#include "platform/appkit/NSTextMeasurer.h"

namespace Corvella {

/// Measures texts as Qt lays them out: line by line, broken between words, or within a word that is
/// wider than a line. The time it takes grows with the text's length. Needs a `QGuiApplication`.
/// Any thread.
class QtTextMeasurer final : public NSTextMeasurer {
 public:
  NSSize measure(std::string_view text, const NSFont* font, double width) const override;
};

}  // namespace Corvella
