#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/appkit/NSControl.h"
#include "platform/appkit/NSGeometry.h"
#include "platform/appkit/NSInterfaceLoader.h"
#include "platform/appkit/NSView.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSCoder.h"
#include "platform/foundation/NSObject.h"

/// Stores `object` in an outlet, a `std::shared_ptr` or `std::weak_ptr` to a class derived from
/// `NSObject`, if it is of the outlet's class, and gives whether it is.
template <template <class> class Pointer, class Class>
bool NSConnectOutlet(Pointer<Class>& outlet, const std::shared_ptr<NSObject>& object) {
  const auto typed = std::dynamic_pointer_cast<Class>(object);
  if (typed) outlet = typed;
  return typed != nullptr;
}

/// Owns a view that comes from an interface file, and answers for the file's outlets and actions.
/// Owned by the host. Lives on the main queue.
class NSViewController : public NSObject, public std::enable_shared_from_this<NSViewController> {
 public:
  using PreferredContentSizeObserver = std::function<void(NSSize)>;

  /// `bundle` is where the interface file lies, null for the loader's own. The loader must outlive
  /// the controller.
  NSViewController(const NSInterfaceLoader& loader, std::optional<std::string> nibName,
                   std::shared_ptr<const NSBundle> bundle);
  /// Reads "nibName".
  NSViewController(const NSInterfaceLoader& loader, const NSCoder& coder);
  explicit NSViewController(const NSInterfaceLoader& loader);

  /// The name of the interface file; empty for none.
  virtual std::string nibName() const { return nibName_; }

  /// The controller's view, never null; the first call loads it. Throws what the loader throws, and
  /// `std::runtime_error` when the file connects no view.
  std::shared_ptr<NSView> view();
  bool isViewLoaded() const { return view_ != nullptr; }

  NSSize preferredContentSize() const { return preferredContentSize_; }
  /// The size in points that the host is asked to give the view. A size with a number that is not
  /// finite is ignored; what is below zero becomes zero.
  void setPreferredContentSize(NSSize size);
  /// Called with the new size, once it is stored, whenever the preferred content size changes.
  void setPreferredContentSizeObserver(PreferredContentSizeObserver observer);

  /// Called by the host each time the view is about to be shown or hidden.
  virtual void viewWillAppear() {}
  virtual void viewWillDisappear() {}

  /// Connects the outlet `name`; a derived class answers for its own and asks its base for the
  /// others. This one knows "view". Gives whether there is such an outlet for an object of that
  /// class.
  virtual bool connectOutlet(std::string_view name, const std::shared_ptr<NSObject>& object);

  /// Gives the control the action of that selector, such as "playButtonClicked:". The action does
  /// not hold the controller, and does nothing once that has ended. A derived class answers for its
  /// own actions and asks its base for the others; this one knows none. Gives whether there is such
  /// an action for a control of that class.
  virtual bool connectAction(std::string_view selector, NSControl& control);

 private:
  const NSInterfaceLoader& loader_;
  std::string nibName_;
  std::shared_ptr<const NSBundle> bundle_;
  std::shared_ptr<NSView> view_;
  NSSize preferredContentSize_;
  PreferredContentSizeObserver preferredContentSizeObserver_;
};
