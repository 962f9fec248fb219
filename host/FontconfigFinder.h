#pragma once

#include <string_view>

#include "platform/appkit/NSFontFinder.h"

namespace Corvella {

/// Finds fonts among those that Qt knows. Needs a `QGuiApplication`. Any thread.
class QtFontFinder final : public NSFontFinder {
 public:
  bool hasFamily(std::string_view family) const override;
};

}  // namespace Corvella
