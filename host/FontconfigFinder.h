#pragma once

#include <string_view>

#include "platform/appkit/NSFontFinder.h"

namespace Corvella {

/// Finds fonts among those of the system, which are also those that Qt knows; asked about them, Qt
/// would hold up the window, which loads its own fonts just then. Any thread.
class FontconfigFinder final : public NSFontFinder {
 public:
  bool hasFamily(std::string_view family) const override;
};

}  // namespace Corvella
