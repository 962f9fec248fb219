#include "platform/foundation/NSClassRegistry.h"

#include <utility>

void NSClassRegistry::registerClass(std::string name, NSClass registered) {
  classes_.insert_or_assign(std::move(name), std::move(registered));
}

const NSClass* NSClassRegistry::classNamed(std::string_view name) const {
  const auto found = classes_.find(name);
  return found == classes_.end() ? nullptr : &found->second;
}
