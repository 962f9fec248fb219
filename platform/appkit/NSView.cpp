#include "platform/appkit/NSView.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace {

NSRect decodeFrame(const NSCoder& coder) {
  const NSCoder* const frame = coder.childForKey("frame");
  if (!frame) return {};
  const auto extent = [frame](std::string_view key) {
    const double value = frame->decodeDoubleForKey(key);
    if (value < 0) frame->failForKey(key);
    return value;
  };
  return NSMakeRect(frame->decodeDoubleForKey("x"), frame->decodeDoubleForKey("y"), extent("width"),
                    extent("height"));
}

unsigned decodeAutoresizingMask(const NSCoder& coder) {
  const NSCoder* const mask = coder.childForKey("autoresizingMask");
  if (!mask) return NSViewNotSizable;
  const auto bit = [mask](std::string_view key, unsigned value) {
    return mask->decodeBoolForKey(key) ? value : 0U;
  };
  return bit("flexibleMinX", NSViewMinXMargin) | bit("widthSizable", NSViewWidthSizable) |
         bit("flexibleMaxX", NSViewMaxXMargin) | bit("flexibleMinY", NSViewMinYMargin) |
         bit("heightSizable", NSViewHeightSizable) | bit("flexibleMaxY", NSViewMaxYMargin);
}

std::string decodeAccessibilityLabel(const NSCoder& coder) {
  for (const NSCoder* const place : {&coder, &coder.cell()}) {
    if (const NSCoder* const accessibility = place->childForKey("accessibility")) {
      return accessibility->decodeStringForKey("description");
    }
  }
  return {};
}

bool isFinite(NSRect rect) {
  return std::isfinite(rect.origin.x) && std::isfinite(rect.origin.y) &&
         std::isfinite(rect.size.width) && std::isfinite(rect.size.height);
}

NSRect usable(NSRect rect) {
  if (!isFinite(rect)) return {};
  return NSMakeRect(rect.origin.x, rect.origin.y, std::max(0.0, rect.size.width),
                    std::max(0.0, rect.size.height));
}

/// One direction of a view's place.
struct Span {
  double start;
  double length;
};

/// Shares `change`, by which the superview grew, evenly among the flexible ones of the margin
/// before the view, its length and the margin after it; without one the view stays where it is.
Span resized(Span span, double change, bool before, bool length, bool after) {
  const int parts = int{before} + int{length} + int{after};
  if (parts == 0) return span;
  const double share = change / parts;
  return {.start = span.start + (before ? share : 0), .length = span.length + (length ? share : 0)};
}

}  // namespace

NSView::NSView(NSRect frame) : frame_(usable(frame)) {}

NSView::NSView(const NSCoder& coder)
    : frame_(usable(decodeFrame(coder))),
      autoresizingMask_(decodeAutoresizingMask(coder)),
      accessibilityLabel_(decodeAccessibilityLabel(coder)),
      identifier_(coder.decodeStringForKey("identifier")) {}

void NSView::setFrame(NSRect frame) {
  if (!isFinite(frame)) return;
  const NSSize oldSize = frame_.size;
  if (!store(frame_, usable(frame)) || frame_.size == oldSize) return;
  frameSizeDidChange();
  for (const auto& view : subviews_) view->resizeWithOldSuperviewSize(oldSize, frame_.size);
}

void NSView::setFrameSize(NSSize size) {
  setFrame({.origin = frame_.origin, .size = size});
}

void NSView::addSubview(std::shared_ptr<NSView> view) {
  assert(view);
  subviews_.push_back(std::move(view));
  setNeedsDisplay(true);
}

void NSView::invalidateIntrinsicContentSize() {
  needsUpdateConstraints_ = true;
}

void NSView::resizeWithOldSuperviewSize(NSSize oldSize, NSSize newSize) {
  const auto flexible = [this](unsigned part) { return (autoresizingMask_ & part) != 0; };
  const Span x = resized({.start = frame_.origin.x, .length = frame_.size.width},
                         newSize.width - oldSize.width, flexible(NSViewMinXMargin),
                         flexible(NSViewWidthSizable), flexible(NSViewMaxXMargin));
  const Span y = resized({.start = frame_.origin.y, .length = frame_.size.height},
                         newSize.height - oldSize.height, flexible(NSViewMinYMargin),
                         flexible(NSViewHeightSizable), flexible(NSViewMaxYMargin));
  setFrame(NSMakeRect(x.start, y.start, x.length, y.length));
}
