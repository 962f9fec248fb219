#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>

#include "host/WidgetSnapshot.h"

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
  const std::map<std::string, ViewSnapshot>& views() const { return views_; }
  NSSize size() const { return size_; }
  /// Whether a track, or its absence, has been shown: the widget asks for a size only then.
  const std::optional<NSSize>& preferredContentSize() const { return preferredContentSize_; }

 private:
  std::map<std::string, ViewSnapshot> views_;
  NSSize size_;
  std::optional<NSSize> preferredContentSize_;
};

/// The display as text, one outlet a line under its own name; ends in a line feed.
std::string displayText(const WidgetDisplay& display);

/// The whole text of the lyrics panel, without control characters but for line feeds; ends in a
/// line feed unless it is empty.
std::string lyricsText(const WidgetDisplay& display);

}  // namespace Corvella
