#pragma once

#include <optional>
#include <vector>

#include "extension/WidgetSnapshot.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSViewController.h"

namespace Corvella {

/// Copies what changes on the widget's display into snapshots. Lives on the widget's thread.
class SnapshotTaker {
 public:
  /// Watches the size that `controller` prefers, whose view has been loaded.
  explicit SnapshotTaker(std::shared_ptr<NSViewController> controller);
  SnapshotTaker(const SnapshotTaker&) = delete;
  SnapshotTaker& operator=(const SnapshotTaker&) = delete;

  /// Resizes the widget's view to the size that it prefers. Then returns the views that changed
  /// since the last snapshot, or nothing when none did.
  std::optional<WidgetSnapshot> take();

  /// The views of the hierarchy under `root` that are marked for display, as they are now. Clears
  /// their marks.
  static std::vector<ViewSnapshot> takeChangedViews(NSView& root);

 private:
  const std::shared_ptr<NSViewController> controller_;
  std::optional<NSSize> preferredContentSize_;
  bool sizeChanged_ = false;
};

}  // namespace Corvella
