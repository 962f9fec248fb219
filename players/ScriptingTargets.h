#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "platform/foundation/NSPropertyList.h"

namespace Corvella {

/// The applications that a program is entitled to script, and for what. Immutable; any thread.
class ScriptingTargets {
 public:
  /// Grants nothing.
  ScriptingTargets() = default;

  /// Reads `com.apple.security.scripting-targets`: application identifiers, each with its list of
  /// access groups. Whatever is not of that form grants nothing.
  static ScriptingTargets fromEntitlements(const NSPropertyList& entitlements);

  /// Whether the application may be addressed at all.
  bool grants(std::string_view application) const;

  bool grants(std::string_view application, std::string_view accessGroup) const;

 private:
  std::map<std::string, std::set<std::string, std::less<>>, std::less<>> groups_;
};

}  // namespace Corvella
