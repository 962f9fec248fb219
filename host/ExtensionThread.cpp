#include "host/ExtensionThread.h"

#include <exception>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "host/SnapshotTaker.h"
#include "host/WidgetClasses.h"
#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSNibLoader.h"
#include "platform/appkit/NSRangeControl.h"
#include "platform/appkit/NSViewController.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/foundation/NSClassRegistry.h"
#include "platform/notification_center/NCWidgetProviding.h"
#include "platform/notification_center/NSExtensionMain.h"
#include "widget/TodayViewController.h"

namespace Corvella {

namespace {

std::shared_ptr<NSView> findView(const std::shared_ptr<NSView>& view,
                                 const std::string& identifier) {
  if (view->identifier() == identifier) return view;
  for (const auto& subview : view->subviews()) {
    if (auto found = findView(subview, identifier)) return found;
  }
  return nullptr;
}

}  // namespace

/// The extension itself: everything that lives on its thread.
class ExtensionThread::Extension {
 public:
  Extension(const HostServices& services, RunLoop& runLoop, WidgetHost& host)
      : host_(host),
        loader_(services.bundle, {.classes = classes_,
                                  .textMeasurer = services.textMeasurer,
                                  .fontFinder = services.fontFinder}) {
    registerClasses(services, runLoop);
    controller_ = NSExtensionMain(services.bundle, classes_);
    controller_->setPreferredContentSizeObserver([this](NSSize size) {
      preferredContentSize_ = size;
      sizeChanged_ = true;
    });
    runLoop.setTurnObserver([this] { endTurn(); });
  }

  void performUpdate() {
    auto& widget = dynamic_cast<NCWidgetProviding&>(*controller_);
    widget.widgetPerformUpdateWithCompletionHandler(
        [this](NCUpdateResult result) { reports_.push_back(result); });
  }

  void appear() { controller_->viewWillAppear(); }
  void disappear() { controller_->viewWillDisappear(); }

  void click(const std::string& identifier) {
    const auto view = findView(controller_->view(), identifier);
    if (const auto button = std::dynamic_pointer_cast<NSButton>(view)) button->performClick();
  }

  void setValue(const std::string& identifier, double value) {
    const auto view = findView(controller_->view(), identifier);
    const auto control = std::dynamic_pointer_cast<NSRangeControl>(view);
    if (!control || !control->isEnabled()) return;
    control->setDoubleValue(value);
    control->sendAction();
  }

 private:
  void registerClasses(const HostServices& services, RunLoop& runLoop) {
    registerWidgetClasses(classes_);
    classes_.registerClass("Corvella.TodayViewController",
                           NSClass::initialised<TodayViewController>([this, services, &runLoop] {
                             return std::make_shared<TodayViewController>(
                                 TodayViewServices{.interfaceLoader = loader_,
                                                   .mainRunLoop = runLoop,
                                                   .mainQueue = runLoop.mainQueue(),
                                                   .globalQueue = globalQueue_,
                                                   .scriptRunner = services.scriptRunner,
                                                   .bundle = services.bundle,
                                                   .imageDecoder = services.imageDecoder,
                                                   .fontFinder = services.fontFinder});
                           }));
  }

  void endTurn() {
    showChanges();
    // After the display that they speak of.
    for (const auto result : std::exchange(reports_, {})) host_.updateReported(result);
  }

  void showChanges() {
    const auto view = controller_->view();
    if (preferredContentSize_) view->setFrameSize(*preferredContentSize_);
    auto views = takeSnapshot(*view);
    const bool sizeChanged = std::exchange(sizeChanged_, false);
    if (views.empty() && !sizeChanged) return;
    host_.displayChanged({.views = std::move(views),
                          .size = view->bounds().size,
                          .preferredContentSize = preferredContentSize_});
  }

  WidgetHost& host_;
  NSClassRegistry classes_;
  NSNibLoader loader_;
  std::shared_ptr<NSViewController> controller_;
  std::optional<NSSize> preferredContentSize_;
  bool sizeChanged_ = false;
  std::vector<NCUpdateResult> reports_;
  GlobalQueue globalQueue_;  // Last: its running blocks use all of the above until they end.
};

ExtensionThread::ExtensionThread(const HostServices& services, WidgetHost& host)
    : services_(services), host_(host), runLoop_(services.clock), thread_([this] { run(); }) {}

ExtensionThread::~ExtensionThread() {
  runLoop_.stop();
  thread_.join();
}

void ExtensionThread::run() {
  try {
    extension_ = std::make_unique<Extension>(services_, runLoop_, host_);
    runLoop_.run();
  } catch (const std::exception& error) {
    host_.startFailed(error.what());
  }
  runLoop_.setTurnObserver(nullptr);
  extension_ = nullptr;
}

void ExtensionThread::post(void (Extension::*message)()) {
  dispatch_async(runLoop_.mainQueue(), [this, message] { (extension_.get()->*message)(); });
}

void ExtensionThread::performUpdate() {
  post(&Extension::performUpdate);
}
void ExtensionThread::appear() {
  post(&Extension::appear);
}
void ExtensionThread::disappear() {
  post(&Extension::disappear);
}

void ExtensionThread::click(const std::string& identifier) {
  dispatch_async(runLoop_.mainQueue(), [this, identifier] { extension_->click(identifier); });
}

void ExtensionThread::setValue(const std::string& identifier, double value) {
  {
    const std::lock_guard lock(mutex_);
    const bool waiting = !newestValues_.insert_or_assign(identifier, value).second;
    if (waiting) return;
  }
  dispatch_async(runLoop_.mainQueue(), [this, identifier] {
    double newest = 0;
    {
      const std::lock_guard lock(mutex_);
      newest = newestValues_.extract(identifier).mapped();
    }
    extension_->setValue(identifier, newest);
  });
}

}  // namespace Corvella
