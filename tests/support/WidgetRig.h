#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "platform/appkit/NSInterfaceLoader.h"
#include "platform/dispatch/RunLoop.h"
#include "tests/support/FakeImageDecoder.h"
#include "tests/support/InterfaceElement.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ManualQueue.h"
#include "tests/support/RecordingScriptRunner.h"
#include "widget/TodayViewController.h"

namespace Corvella {

/// What happened, in order.
using EventLog = std::vector<std::string>;

/// A view that logs its identifier whenever a write changes what it shows.
template <typename View>
struct Recorded final : View {
  Recorded(const NSCoder& coder, EventLog& events) : View(coder), log(events) {}

  void setNeedsDisplay(bool needsDisplay) override {
    if (needsDisplay) log.push_back(this->identifier());
    View::setNeedsDisplay(needsDisplay);
  }

  EventLog& log;
};

/// Logs its name for every block, and hands the block on to the queue behind it.
struct RecordedQueue final : DispatchQueue {
  RecordedQueue(EventLog& events, std::string logged, DispatchQueue& behind)
      : log(events), name(std::move(logged)), queue(behind) {}

  void enqueue(std::function<void()> block) override {
    log.push_back(name);
    queue.enqueue(std::move(block));
  }
  bool isCurrent() const override { return queue.isCurrent(); }

  EventLog& log;
  std::string name;
  DispatchQueue& queue;
};

/// Looks at what the widget's controller keeps to itself.
struct TodayViewControllerInspector {
  bool& expanded() const { return controller.expanded; }
  std::int64_t songRating() const { return controller.songRating.integerValue(); }
  bool hasCompletionHandler() const { return controller.completionHandler != nullptr; }
  std::shared_ptr<NSTimer> timer() const { return controller.timer; }

  TodayViewController& controller;
};

/// The widget's controller among controls made by hand, services that tests drive step by step, and
/// a log of everything that goes through either. Tests read the controls through the controller's
/// outlets.
class WidgetRig : public InterfaceElement, private NSInterfaceLoader {
 public:
  using Widget = TodayViewController;

  /// The interface file connects no outlet whose name is in `absent`.
  explicit WidgetRig(const std::set<std::string>& absent = {}) {
    scripts.observer = [this](const std::string& command) { log.push_back(command); };
    controller->setPreferredContentSizeObserver([this](NSSize size) {
      log.push_back("height " + std::to_string(static_cast<int>(size.height)));
    });
    add<NSImageView>("albumArtView");
    add<NSTextField>("songTitle");
    add<NSTextField>("songArtistAndAlbum");
    add<NSLevelIndicator>("songRatingIndicator")->setMaxValue(5);
    add<NSButton>("playButton");
    add<NSSlider>("soundVolume")->setMaxValue(100);
    add<NSProgressIndicator>("progressBar");
    add<NSButton>("toggleLyricsButton");
    add<LyricsTextView>("lyricsView");
    const auto cell = std::make_shared<SongRatingLevelIndicatorCell>(coder);
    cell->setControlView(cellView);
    outlets["songRatingCell"] = cell;
    for (const auto& name : absent) outlets.erase(name);
    controller->view();
    log.clear();
  }

  static constexpr auto kSong =
      "get (name, artist, album, lyrics, rating, finish) of current track";
  static constexpr auto kState = "get player state as string";
  static constexpr auto kVolume = "get sound volume";
  static constexpr auto kArtwork = "tell artwork 1 of the current track to raw data";
  static constexpr auto kLyrics = "get lyrics of current track";
  static constexpr auto kPosition = "player position";

  /// All events since the last call.
  EventLog take() { return std::exchange(log, {}); }

  void playerRuns(const std::string& state) {
    scripts.answerText("running", "true");
    scripts.answerText(kState, state);
  }

  void playerPlays(const std::string& title, const std::string& lyrics = "La", int rating = 60,
                   const std::string& finish = "200.0") {
    using Descriptor = NSAppleEventDescriptor;
    const auto text = &Descriptor::descriptorWithString;
    playerRuns("playing");
    scripts.answer(kSong, Descriptor::listDescriptor(
                              {text(title), text("Artist X"), text("Album Y"), text(lyrics),
                               Descriptor::descriptorWithInt32(rating), text(finish)}));
    scripts.answerText(kLyrics, lyrics);
    scripts.answerText(kVolume, "35");
    scripts.answerText(kPosition, "63.5");
    scripts.answer(kArtwork, Descriptor::descriptorWithData(FakeImageDecoder::picture(7, 7)));
  }

  /// Runs `operation` as a block of the main queue, as the host and the controls do.
  void onMain(const std::function<void()>& operation) {
    loop.mainQueue().enqueue(operation);
    loop.runTurn();
  }

  /// Calls a method of the controller as a block of the main queue.
  template <typename Method, typename... Arguments>
  void call(Method method, Arguments&&... arguments) {
    onMain([&] { std::invoke(method, *controller, std::forward<Arguments>(arguments)...); });
  }

  /// Runs everything that waits, on both queues, until nothing is left.
  void settle() {
    do {
      globalQueue.runAll();
    } while (loop.runTurn() || globalQueue.size() > 0);
  }

  /// A refresh from its start to its display.
  void refresh() {
    call(&Widget::updateSongInfo);
    settle();
  }

  void tickAfter(std::chrono::milliseconds time) {
    clock.advance(time);
    loop.runTurn();
  }

  /// The title of the button, the lyrics, and the size that the widget prefers.
  void expectPanel(const std::string& title, const std::string& lyrics, double height,
                   double width = 320) const {
    EXPECT_EQ(controller->toggleLyricsButton()->title(), title);
    EXPECT_EQ(controller->lyricsView()->string(), lyrics);
    EXPECT_EQ(controller->preferredContentSize(), (NSSize{width, height}));
  }

  /// A callback of the host that logs what it is told.
  Widget::CompletionHandler report() {
    return [this](NCUpdateResult result) { log.push_back("report " + std::to_string(result)); };
  }

  EventLog log;
  RecordingScriptRunner scripts;
  ManualClock clock;
  RunLoop loop{clock};
  ManualQueue globalQueue;
  FakeImageDecoder decoder;
  NSBundle bundle{CORVELLA_RESOURCES};
  std::shared_ptr<NSView> cellView = make<NSView>("songRatingCell");
  std::shared_ptr<NSButton> otherButton = make<NSButton>("otherButton");
  /// What the interface file connects, by the names of the outlets.
  std::map<std::string, std::shared_ptr<NSObject>> outlets;

  RecordedQueue mainQueue{log, "to main", loop.mainQueue()};
  RecordedQueue recordedGlobalQueue{log, "to global", globalQueue};
  TodayViewServices services{.interfaceLoader = *this,
                             .mainRunLoop = loop,
                             .mainQueue = mainQueue,
                             .globalQueue = recordedGlobalQueue,
                             .scriptRunner = scripts,
                             .bundle = bundle,
                             .imageDecoder = decoder,
                             .fontFinder = fonts};
  std::shared_ptr<Widget> controller = std::make_shared<Widget>(services);
  TodayViewControllerInspector inside{*controller};

 private:
  template <typename View>
  std::shared_ptr<View> make(const std::string& name) {
    coder.encodeString("identifier", name);
    coder.encodeChild("frame", name).encodeString("width", "300");
    return std::make_shared<Recorded<View>>(coder, log);
  }
  template <typename View>
  std::shared_ptr<View> add(const std::string& name) {
    auto view = make<View>(name);
    outlets[name] = view;
    return view;
  }

  /// Stands in for the interface file.
  void instantiate(std::string_view, const NSBundle*, NSViewController& owner) const override {
    owner.connectOutlet("view", std::make_shared<NSView>(NSMakeRect(0, 0, 320, 285)));
    for (const auto& [name, object] : outlets) owner.connectOutlet(name, object);
    owner.awakeFromNib();
  }
};

}  // namespace Corvella
