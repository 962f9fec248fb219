#pragma once

#include <string>
#include <string_view>

#include "platform/appkit/NSFontFinder.h"

/// Has one family.
struct FixedFontFinder final : NSFontFinder {
  bool hasFamily(std::string_view name) const override { return name == family; }

  std::string family = "Helvetica Neue";
};
