#include "extension/ExtensionThread.h"

#include <chrono>
#include <exception>
#include <functional>
#include <optional>
#include <utility>

#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "extension/CountedQueue.h"
#include "extension/Curtain.h"
#include "extension/SnapshotTaker.h"
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
        blocks_([&runLoop] { wakeUp(runLoop); }),
        mainQueue_(runLoop.mainQueue(), blocks_),
        countedGlobalQueue_(globalQueue_, blocks_),
        loader_(services.bundle, {.classes = classes_,
                                  .textMeasurer = services.textMeasurer,
                                  .fontFinder = services.fontFinder}),
        curtain_(runLoop) {
    registerClasses(services, scriptRunner, runLoop);
    controller_ = NSExtensionMain(services.bundle, classes_);
    snapshots_.emplace(controller_);
    runLoop.setTurnObserver([this] { endTurn(); });
  }

  void appear(std::chrono::milliseconds longestCurtain) {
    // Not when the widget is made: its operations belong to the loop, which does not run by then.
    if (!std::exchange(hasCallback_, true)) {
      auto& widget = dynamic_cast<NCWidgetProviding&>(*controller_);
      widget.widgetPerformUpdateWithCompletionHandler(
          [this](NCUpdateResult result) { playerRuns_ = result == NCUpdateResultNewData; });
    }
    shown_ = true;
    curtain_.fall(longestCurtain);
    controller_->viewWillAppear();
    looks_ = playerRuns_;
  }

  void disappear() {
    shown_ = false;
    pageIsWanted_ = false;
    controller_->viewWillDisappear();
  }

  void turnPage() { pageIsWanted_ = shown_; }

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
  void settle(std::uint64_t number) { settling_ = number; }

 private:
  void registerClasses(const HostServices& services, ScriptRunner& scriptRunner, RunLoop& runLoop) {
    classes_.registerClass("Corvella.SongRatingLevelIndicatorCell",
                           NSClass::decoded<SongRatingLevelIndicatorCell>());
    classes_.registerClass("Corvella.LyricsTextView", NSClass::decoded<LyricsTextView>());
    classes_.registerClass(
        "Corvella.TodayViewController",
        NSClass::initialised<TodayViewController>([this, services, &scriptRunner, &runLoop] {
          return std::make_shared<TodayViewController>(
              TodayViewServices{.interfaceLoader = loader_,
                                .mainRunLoop = runLoop,
                                .mainQueue = mainQueue_,
                                .globalQueue = countedGlobalQueue_,
                                .scriptRunner = scriptRunner,
                                .bundle = services.bundle,
                                .imageDecoder = services.imageDecoder,
                                .fontFinder = services.fontFinder});
        }));
  }

  void endTurn() {
    if (blocks_.isZero()) look();
    const bool isWhole = blocks_.isZero();
    if (isWhole) curtain_.rise();
    // Before the widget appears, its views hold what the interface file says, and no truth.
    if (hasCallback_ && !curtain_.isDown()) {
      if (auto snapshot = snapshots_->take()) host_.displayChanged(*std::move(snapshot));
    }
    // A refresh that is under way may have asked before the input came, and show what was before.
    if (isWhole && pinged_) host_.answered(*std::exchange(pinged_, std::nullopt));
    if (isWhole) turnWantedPage();
    const bool settled = blocks_.isZero();
    if (settling_ && settled) host_.settled(*std::exchange(settling_, std::nullopt));
  }

  /// The widget moves its bar once a second while the player plays. This one tick more after each
  /// appearance shows where a player stands that is paused, and spares one that plays the first
  /// second.
  void look() {
    if (!std::exchange(looks_, false) || !shown_) return;
    dispatch_async(mainQueue_, [this] {
      if (!shown_) return;
      std::static_pointer_cast<TodayViewController>(controller_)->updateProgress(nullptr);
    });
  }

  void turnWantedPage() {
    if (!std::exchange(pageIsWanted_, false)) return;
    dispatch_async(mainQueue_, [this] {
      if (!shown_) return;
      controller_->viewWillDisappear();
      appear(Curtain::kLongestAtNews);
    });
  }

  /// Whether the widget has settled is checked when a turn of the run loop ends. The last block may
  /// end on another thread, after the last turn; without one more turn nobody would notice.
  static void wakeUp(RunLoop& runLoop) {
    if (!runLoop.mainQueue().isCurrent()) dispatch_async(runLoop.mainQueue(), [] {});
  }

  WidgetHost& host_;
  BlockCount blocks_;
  CountedQueue mainQueue_;
  CountedQueue countedGlobalQueue_;
  NSClassRegistry classes_;
  NSNibLoader loader_;
  std::shared_ptr<NSViewController> controller_;
  std::optional<SnapshotTaker> snapshots_;
  Curtain curtain_;
  bool hasCallback_ = false;  // Whether the widget has the callback for its reports.
  bool shown_ = false;
  bool playerRuns_ = false;  // As the widget reported last.
  bool looks_ = false;       // Whether to look at the position once the widget has settled.
  bool pageIsWanted_ = false;
  std::optional<std::uint64_t> pinged_;
  std::optional<std::uint64_t> settling_;
  GlobalQueue globalQueue_;  // Ends first: it waits for its blocks, which use the members above.
};

ExtensionThread::ExtensionThread(const HostServices& services, ScriptRunner& scriptRunner,
                                 WidgetHost& host)
    : services_(services),
      host_(host),
      scriptRunner_(scriptRunner),
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
    // A value set after this message must not replace one that waits before it, for then it would
    // arrive before the message.
    const std::lock_guard lock(mutex_);
    waitingValues_.clear();
  }
  dispatch_async(runLoop_.mainQueue(),
                 [this, message = std::move(message)] { message(*extension_); });
}

void ExtensionThread::appear() {
  send([](Extension& extension) { extension.appear(Curtain::kLongestAtOpening); });
}

void ExtensionThread::disappear() {
  send([](Extension& extension) { extension.disappear(); });
}

void ExtensionThread::turnPage() {
  send([](Extension& extension) { extension.turnPage(); });
}

void ExtensionThread::click(const std::string& identifier) {
  send([identifier](Extension& extension) { extension.click(identifier); });
}

void ExtensionThread::ping(std::uint64_t number) {
  // Not by `send`: a ping changes nothing, so a later value may still replace one that waits.
  dispatch_async(runLoop_.mainQueue(), [this, number] { extension_->ping(number); });
}

void ExtensionThread::settle(std::uint64_t number) {
  send([number](Extension& extension) { extension.settle(number); });
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
