#include "extension/WidgetDisplay.h"

#include <utility>

namespace Corvella {

void WidgetDisplay::apply(WidgetSnapshot snapshot) {
  for (auto& view : snapshot.views) views_.insert_or_assign(view.identifier, std::move(view));
  size_ = snapshot.size;
  preferredContentSize_ = snapshot.preferredContentSize;
}

const ViewSnapshot* WidgetDisplay::view(const std::string& identifier) const {
  const auto found = views_.find(identifier);
  return found == views_.end() ? nullptr : &found->second;
}

}  // namespace Corvella
