#include "platform/appkit/NSLevelIndicator.h"

#include <utility>

NSLevelIndicator::NSLevelIndicator(NSRect frame) : NSRangeControl(frame, {0, 2}) {}

NSLevelIndicator::NSLevelIndicator(const NSCoder& coder) : NSRangeControl(coder, {0, 2}) {}

void NSLevelIndicator::setCell(std::shared_ptr<NSLevelIndicatorCell> cell) {
  if (!store(cell_, std::move(cell))) return;
  if (cell_) cell_->setControlView(weak_from_this());
}
