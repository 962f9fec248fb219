#include "platform/appkit/NSLayoutManager.h"

#include <utility>

NSLayoutManager::NSLayoutManager(const NSTextMeasurer& measurer) : measurer_(measurer) {}

void NSLayoutManager::setTextStorage(std::shared_ptr<const NSTextStorage> storage) {
  storage_ = std::move(storage);
  layout_.reset();
}

void NSLayoutManager::ensureLayoutForTextContainer(const NSTextContainer& container) {
  if (!storage_ || isCurrent(container)) return;
  const NSSize size =
      measurer_.measure(storage_->string(), storage_->font().get(), container.width());
  layout_ = {.revision = storage_->revision(), .width = container.width(), .size = size};
}

NSRect NSLayoutManager::usedRectForTextContainer(const NSTextContainer& container) const {
  if (!isCurrent(container)) return {};
  return {.origin = {}, .size = layout_->size};
}

bool NSLayoutManager::isCurrent(const NSTextContainer& container) const {
  return layout_ && layout_->revision == storage_->revision() &&
         layout_->width == container.width();
}
