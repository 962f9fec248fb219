#pragma once

#include <memory>

#include "platform/appkit/NSLevelIndicatorCell.h"
#include "platform/appkit/NSRangeControl.h"

/// Shows a number as a row of stars or as a bar, 0..2 where nothing else is set. The number is the
/// indicator's, its look the cell's. Lives on the main queue.
class NSLevelIndicator : public NSRangeControl {
 public:
  explicit NSLevelIndicator(NSRect frame = {});
  /// Reads the number and its range; the cell is made and set by the loader, which knows its class.
  explicit NSLevelIndicator(const NSCoder& coder);

  /// Null until one is set.
  const std::shared_ptr<NSLevelIndicatorCell>& cell() const { return cell_; }
  /// The indicator must be held by a `std::shared_ptr` already.
  void setCell(std::shared_ptr<NSLevelIndicatorCell> cell);

 private:
  std::shared_ptr<NSLevelIndicatorCell> cell_;
};
