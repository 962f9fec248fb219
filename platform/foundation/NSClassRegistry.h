#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "platform/foundation/NSClass.h"

/// The classes that interface files and property lists name. The program fills it before it loads
/// any of them; from then on any thread may read it.
class NSClassRegistry {
 public:
  /// Makes a class known under `name`: "Module.Class", or "Class" for one outside of modules. Takes
  /// the place of one of that name.
  void registerClass(std::string name, NSClass registered);

  /// Null when there is none of that name. Owned by the registry.
  const NSClass* classNamed(std::string_view name) const;

 private:
  std::map<std::string, NSClass, std::less<>> classes_;
};
