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
  Extension(const HostServices& services, ScriptRunner& scriptRunner, RunLoop& runLoop,
            WidgetHost& host)
      : host_(host),
        loader_(services.bundle, {.classes = classes_,
                                  .textMeasurer = services.textMeasurer,
                                  .fontFinder = services.fontFinder}) {
    registerClasses(services, scriptRunner, runLoop);
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

  void ping(std::uint64_t number) { pinged_ = number; }

 private:
  void registerClasses(const HostServices& services, ScriptRunner& scriptRunner, RunLoop& runLoop) {
    registerWidgetClasses(classes_);
    classes_.registerClass(
        "Corvella.TodayViewController",
        NSClass::initialised<TodayViewController>([this, services, &scriptRunner, &runLoop] {
          return std::make_shared<TodayViewController>(
              TodayViewServices{.interfaceLoader = loader_,
                                .mainRunLoop = runLoop,
                                .mainQueue = runLoop.mainQueue(),
                                .globalQueue = globalQueue_,
                                .scriptRunner = scriptRunner,
                                .bundle = services.bundle,
                                .imageDecoder = services.imageDecoder,
                                .fontFinder = services.fontFinder});
        }));
  }

  void endTurn() {
    showChanges();
    // After the display that they speak of.
    for (const auto result : std::exchange(reports_, {})) host_.updateReported(result);
    if (const auto number = std::exchange(pinged_, std::nullopt)) host_.answered(*number);
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
  std::optional<std::uint64_t> pinged_;
  GlobalQueue globalQueue_;  // Last: its running blocks use all of the above until they end.
};

ExtensionThread::ExtensionThread(const HostServices& services, WidgetHost& host)
    : services_(services),
      host_(host),
      scriptRunner_(services.scriptRunner),
      runLoop_(services.clock),
      thread_([this] { run(); }) {}

ExtensionThread::~ExtensionThread() {
  scriptRunner_.end();
  runLoop_.stop();
  thread_.join();
}

void ExtensionThread::run() {
  try {
    extension_ = std::make_unique<Extension>(services_, scriptRunner_, runLoop_, host_);
  } catch (const std::exception& error) {
    host_.startFailed(error.what());
    return;
  }
  runLoop_.run();
  extension_ = nullptr;
}

void ExtensionThread::send(std::function<void(Extension&)> message) {
  {
    // A value that is moved after this message must not arrive before it.
    const std::lock_guard lock(mutex_);
    waitingValues_.clear();
  }
  dispatch_async(runLoop_.mainQueue(),
                 [this, message = std::move(message)] { message(*extension_); });
}

void ExtensionThread::performUpdate() {
  send([](Extension& extension) { extension.performUpdate(); });
}

void ExtensionThread::appear() {
  send([](Extension& extension) { extension.appear(); });
}

void ExtensionThread::disappear() {
  send([](Extension& extension) { extension.disappear(); });
}

void ExtensionThread::click(const std::string& identifier) {
  send([identifier](Extension& extension) { extension.click(identifier); });
}

void ExtensionThread::ping(std::uint64_t number) {
  // It changes nothing, so values may still catch up with one that waits.
  dispatch_async(runLoop_.mainQueue(), [this, number] { extension_->ping(number); });
}

void ExtensionThread::setValue(const std::string& identifier, double value) {
  std::shared_ptr<double> newest;
  {
    const std::lock_guard lock(mutex_);
    auto& waiting = waitingValues_[identifier];
    if (waiting) {
      *waiting = value;
      return;
    }
    newest = waiting = std::make_shared<double>(value);
  }
  dispatch_async(runLoop_.mainQueue(), [this, identifier, newest] {
    extension_->setValue(identifier, takeValue(identifier, newest));
  });
}

double ExtensionThread::takeValue(const std::string& identifier,
                                  const std::shared_ptr<double>& newest) {
  const std::lock_guard lock(mutex_);
  const auto waiting = waitingValues_.find(identifier);
  if (waiting != waitingValues_.end() && waiting->second == newest) waitingValues_.erase(waiting);
  return *newest;
}

}  // namespace Corvella
