#pragma once

#include <string_view>

#include "platform/appkit/NSTextMeasurer.h"

namespace Corvella {

/// Measures texts as the lyrics panel draws them: the same lines (`LyricsLines`), laid out in the
/// same way (`TextParagraph`). Needs a `QGuiApplication`. Any thread.
class QtTextMeasurer final : public NSTextMeasurer {
 public:
  NSSize measure(std::string_view text, const NSFont* font, double width) const override;
};

}  // namespace Corvella
