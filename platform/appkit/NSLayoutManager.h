#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/appkit/NSGeometry.h"
#include "platform/appkit/NSTextContainer.h"
#include "platform/appkit/NSTextMeasurer.h"
#include "platform/appkit/NSTextStorage.h"

/// Lays a text out in its one container, and again only when the text, its font or the container's
/// width has changed. Owned by its text view. Lives on the main queue.
class NSLayoutManager {
 public:
  /// The measurer must outlive the layout manager.
  explicit NSLayoutManager(const NSTextMeasurer& measurer);

  /// `storage` is null where there is no text at all.
  void setTextStorage(std::shared_ptr<const NSTextStorage> storage);

  /// Brings the layout of the whole text up to date.
  void ensureLayoutForTextContainer(const NSTextContainer& container);

  /// The part of the container that the text takes up; empty while the layout is not up to date.
  NSRect usedRectForTextContainer(const NSTextContainer& container) const;

 private:
  struct Layout {
    std::uint64_t revision;
    double width;
    NSSize size;
  };
  bool isCurrent(const NSTextContainer& container) const;

  const NSTextMeasurer& measurer_;
  std::shared_ptr<const NSTextStorage> storage_;
  std::optional<Layout> layout_;
};
