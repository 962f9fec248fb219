#include "players/ScriptingTargets.h"

namespace Corvella {

ScriptingTargets ScriptingTargets::fromEntitlements(const NSPropertyList& entitlements) {
  ScriptingTargets targets;
  const auto* listed = entitlements.objectForKey("com.apple.security.scripting-targets");
  if (listed == nullptr || listed->dictionary() == nullptr) return targets;

  for (const auto& [application, groups] : *listed->dictionary()) {
    if (groups.array() == nullptr) continue;
    auto& granted = targets.groups_[application];
    for (const auto& group : *groups.array()) {
      if (const auto* name = group.string()) granted.insert(*name);
    }
  }
  return targets;
}

bool ScriptingTargets::grants(std::string_view application) const {
  return groups_.find(application) != groups_.end();
}

bool ScriptingTargets::grants(std::string_view application, std::string_view accessGroup) const {
  const auto found = groups_.find(application);
  return found != groups_.end() && found->second.find(accessGroup) != found->second.end();
}

}  // namespace Corvella
