#include "extension/SnapshotTaker.h"

#include <utility>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSTextView.h"

namespace Corvella {

namespace {

RatingContent ratingOf(const NSLevelIndicator& indicator) {
  const auto& cell = indicator.cell();
  return {.stars = static_cast<int>(indicator.integerValue()),
          .mostStars = static_cast<int>(indicator.maxValue()),
          .editable = cell && cell->isEditable(),
          .highlighted = cell && cell->isHighlighted(),
          .continuous = cell && cell->isContinuous(),
          .focusRing = cell && cell->focusRingType() != NSFocusRingTypeNone};
}

decltype(ViewSnapshot::content) contentOf(const NSView& view) {
  if (const auto* field = dynamic_cast<const NSTextField*>(&view)) {
    return TextFieldContent{.text = field->stringValue(),
                            .color = field->textColor(),
                            .font = field->font(),
                            .alignment = field->alignment()};
  }
  if (const auto* button = dynamic_cast<const NSButton*>(&view)) {
    return ButtonContent{
        .title = button->title(), .font = button->font(), .enabled = button->isEnabled()};
  }
  if (const auto* slider = dynamic_cast<const NSSlider*>(&view)) {
    return SliderContent{.minValue = slider->minValue(),
                         .maxValue = slider->maxValue(),
                         .value = slider->doubleValue(),
                         .continuous = slider->isContinuous()};
  }
  if (const auto* indicator = dynamic_cast<const NSLevelIndicator*>(&view)) {
    return ratingOf(*indicator);
  }
  if (const auto* bar = dynamic_cast<const NSProgressIndicator*>(&view)) {
    return ProgressContent{
        .minValue = bar->minValue(), .maxValue = bar->maxValue(), .value = bar->doubleValue()};
  }
  if (const auto* image = dynamic_cast<const NSImageView*>(&view)) {
    return ImageContent{.image = image->image()};
  }
  if (const auto* text = dynamic_cast<const NSTextView*>(&view)) {
    return TextContent{.text = text->string(),
                       .color = text->textColor(),
                       .font = text->font(),
                       .alignment = text->alignment()};
  }
  return PlainContent();
}

void addChanged(NSView& view, NSPoint origin, std::vector<ViewSnapshot>& changed) {
  if (view.needsDisplay()) {
    auto frame = view.frame();
    frame.origin = origin;
    changed.push_back({.identifier = view.identifier(),
                       .frame = frame,
                       .accessibilityLabel = view.accessibilityLabel(),
                       .content = contentOf(view)});
    view.setNeedsDisplay(false);
  }
  for (const auto& subview : view.subviews()) {
    const auto place = subview->frame().origin;
    addChanged(*subview, {.x = origin.x + place.x, .y = origin.y + place.y}, changed);
  }
}

}  // namespace

SnapshotTaker::SnapshotTaker(std::shared_ptr<NSViewController> controller)
    : controller_(std::move(controller)) {
  controller_->setPreferredContentSizeObserver([this](NSSize size) {
    preferredContentSize_ = size;
    sizeChanged_ = true;
  });
}

std::optional<WidgetSnapshot> SnapshotTaker::take() {
  const auto view = controller_->view();
  if (preferredContentSize_) view->setFrameSize(*preferredContentSize_);
  auto views = takeChangedViews(*view);
  const bool sizeChanged = std::exchange(sizeChanged_, false);
  if (views.empty() && !sizeChanged) return std::nullopt;
  return WidgetSnapshot{.views = std::move(views),
                        .size = view->bounds().size,
                        .preferredContentSize = preferredContentSize_};
}

std::vector<ViewSnapshot> SnapshotTaker::takeChangedViews(NSView& root) {
  std::vector<ViewSnapshot> changed;
  addChanged(root, {}, changed);
  return changed;
}

}  // namespace Corvella
