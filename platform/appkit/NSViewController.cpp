#include "platform/appkit/NSViewController.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

NSViewController::NSViewController(const NSInterfaceLoader& loader,
                                   std::optional<std::string> nibName,
                                   std::shared_ptr<const NSBundle> bundle)
    : loader_(loader),
      nibName_(std::move(nibName).value_or(std::string())),
      bundle_(std::move(bundle)) {}

NSViewController::NSViewController(const NSInterfaceLoader& loader, const NSCoder& coder)
    : NSViewController(loader, coder.decodeStringForKey("nibName"), nullptr) {}

NSViewController::NSViewController(const NSInterfaceLoader& loader)
    : NSViewController(loader, std::nullopt, nullptr) {}

std::shared_ptr<NSView> NSViewController::view() {
  if (!view_) loader_.instantiate(nibName(), bundle_.get(), *this);
  if (!view_) throw std::runtime_error(nibName() + ": the file connects no view to its owner");
  return view_;
}

void NSViewController::setPreferredContentSize(NSSize size) {
  if (!std::isfinite(size.width) || !std::isfinite(size.height)) return;
  const NSSize usable{.width = std::max(0.0, size.width), .height = std::max(0.0, size.height)};
  if (usable == preferredContentSize_) return;
  preferredContentSize_ = usable;
  if (preferredContentSizeObserver_) preferredContentSizeObserver_(usable);
}

void NSViewController::setPreferredContentSizeObserver(PreferredContentSizeObserver observer) {
  preferredContentSizeObserver_ = std::move(observer);
}

bool NSViewController::connectOutlet(std::string_view name,
                                     const std::shared_ptr<NSObject>& object) {
  return name == "view" && NSConnectOutlet(view_, object);
}

bool NSViewController::connectAction(std::string_view, NSControl&) {
  return false;
}
