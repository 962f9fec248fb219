#pragma once

#include <string_view>

#include "platform/appkit/NSFontFinder.h"

namespace Corvella {

/// Finds fonts among those of the system, which are those that Qt knows, too. Qt itself is not
/// asked: it answers one thread at a time, and the window, which loads its fonts just when the
/// widget asks, would have to wait. Any thread.
class FontconfigFinder final : public NSFontFinder {
 public:
  bool hasFamily(std::string_view family) const override;
};

}  // namespace Corvella
