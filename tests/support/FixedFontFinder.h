#pragma once

#include <functional>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>

#include "platform/appkit/NSFontFinder.h"

/// Has exactly the families that it is told of.
class FixedFontFinder final : public NSFontFinder {
 public:
  FixedFontFinder(std::initializer_list<std::string> families = {"Helvetica Neue"})
      : families_(families) {}

  bool hasFamily(std::string_view family) const override { return families_.contains(family); }

 private:
  std::set<std::string, std::less<>> families_;
};
