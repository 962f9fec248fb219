#include "platform/appkit/NSTextView.h"

#include <utility>

NSTextView::NSTextView() = default;

NSTextView::NSTextView(NSRect frame, std::shared_ptr<NSTextContainer> container)
    : NSView(frame), textContainer_(std::move(container)) {}

NSTextView::NSTextView(const NSCoder& coder)
    : NSView(coder),
      textContainer_(std::make_shared<NSTextContainer>(frame().size.width)),
      textColor_(NSColor::decodeForKey(coder, "textColor", NSColor::labelColor())),
      alignment_(NSDecodeTextAlignment(coder)) {
  storage_->setFont(NSFont::decodeForKey(coder, "font"));
  textContainer_->setWidthTracksTextView(true);
  setLayoutManager(std::make_shared<NSLayoutManager>(coder.textMeasurer()));
}

void NSTextView::setString(std::string text) {
  if (storage_->setString(std::move(text))) setNeedsDisplay(true);
}

void NSTextView::didChangeText() {
  setNeedsDisplay(true);
}

void NSTextView::setFont(std::shared_ptr<const NSFont> font) {
  if (storage_->setFont(std::move(font))) setNeedsDisplay(true);
}

void NSTextView::setLayoutManager(std::shared_ptr<NSLayoutManager> layoutManager) {
  if (layoutManager) layoutManager->setTextStorage(storage_);
  layoutManager_ = std::move(layoutManager);
}

void NSTextView::frameSizeDidChange() {
  if (textContainer_ && textContainer_->widthTracksTextView()) {
    textContainer_->setWidth(frame().size.width);
  }
}
