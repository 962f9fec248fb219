#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>

#include "extension/WidgetSnapshot.h"

namespace Corvella {

/// The widget's whole display, put together from its snapshots.
class WidgetDisplay {
 public:
  void apply(WidgetSnapshot snapshot);

  /// The view of that identifier; null when none has been seen.
  const ViewSnapshot* view(const std::string& identifier) const;
  /// What the view shows when it is of that kind; null otherwise.
  template <typename Content>
  const Content* content(const std::string& identifier) const {
    const auto* found = view(identifier);
    return found != nullptr ? std::get_if<Content>(&found->content) : nullptr;
  }
  NSSize size() const { return size_; }
  /// The size that the widget asks for; absent before its first refresh has ended.
  const std::optional<NSSize>& preferredContentSize() const { return preferredContentSize_; }

 private:
  std::map<std::string, ViewSnapshot> views_;
  NSSize size_;
  std::optional<NSSize> preferredContentSize_;
};

}  // namespace Corvella
