#include "controls/LyricsTextView.h"

#include <utility>

namespace Corvella {

LyricsTextView::LyricsTextView() = default;

LyricsTextView::LyricsTextView(NSRect frame, std::shared_ptr<NSTextContainer> container)
    : NSTextView(frame, std::move(container)) {}

LyricsTextView::LyricsTextView(const NSCoder& coder) : NSTextView(coder) {}

std::optional<double> LyricsTextView::textHeight() const {
  if (layoutManager() && textContainer()) {
    layoutManager()->ensureLayoutForTextContainer(*textContainer());
  }
  if (!layoutManager() || !textContainer()) return std::nullopt;
  return layoutManager()->usedRectForTextContainer(*textContainer()).size.height;
}

void LyricsTextView::didChangeText() {
  NSTextView::didChangeText();
  invalidateIntrinsicContentSize();
}

}  // namespace Corvella
