#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "platform/appkit/NSInterfaceLoader.h"
#include "platform/dispatch/RunLoop.h"
#include "tests/support/EventLog.h"
#include "tests/support/FakeImageDecoder.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ManualQueue.h"
#include "tests/support/RecordingScriptRunner.h"
#include "widget/TodayViewController.h"

namespace Corvella {

/// A view that logs its name whenever a write changes what it shows.
template <typename View>
class Recorded final : public View {
 public:
  template <typename... Arguments>
  Recorded(EventLog& log, std::string name, Arguments&&... arguments)
      : View(std::forward<Arguments>(arguments)...), log_(log), name_(std::move(name)) {}

  void setNeedsDisplay(bool needsDisplay) override {
    if (needsDisplay) log_.add(name_);
    View::setNeedsDisplay(needsDisplay);
  }

 private:
  EventLog& log_;
  std::string name_;
};

/// Logs its name for every block that is handed on to the queue behind it.
class RecordedQueue final : public DispatchQueue {
 public:
  RecordedQueue(EventLog& log, std::string name, DispatchQueue& queue)
      : log_(log), name_(std::move(name)), queue_(queue) {}

  void enqueue(std::function<void()> block) override {
    log_.add(name_);
    dispatch_async(queue_, std::move(block));
  }
  bool isCurrent() const override { return queue_.isCurrent(); }

 private:
  EventLog& log_;
  std::string name_;
  DispatchQueue& queue_;
};

/// Looks at what the widget's controller keeps to itself.
class TodayViewControllerInspector {
 public:
  explicit TodayViewControllerInspector(TodayViewController& controller)
      : controller_(controller) {}

  bool expanded() const { return controller_.expanded; }
  void setExpanded(bool expanded) { controller_.expanded = expanded; }
  std::int64_t songRating() const { return controller_.songRating.integerValue(); }
  bool hasCompletionHandler() const { return controller_.completionHandler != nullptr; }
  std::shared_ptr<NSTimer> timer() const { return controller_.timer; }

 private:
  TodayViewController& controller_;
};

/// The widget's controller among controls made by hand, services that tests drive step by step, and
/// a log of everything that goes through either.
class WidgetRig : private NSInterfaceLoader {
 public:
  /// The interface file connects no outlet whose name is in `absent`.
  explicit WidgetRig(std::set<std::string> absent = {}) : absentOutlets_(std::move(absent)) {
    scripts.setObserver([this](const std::string& text) { log.add("script: " + text); });
    controller->setPreferredContentSizeObserver([this](NSSize size) {
      log.add("size " + std::to_string(static_cast<int>(size.width)) + " x " +
              std::to_string(static_cast<int>(size.height)));
    });
    songRatingIndicator->setMaxValue(5);
    songRatingCell->setControlView(cellView);
    soundVolume->setMaxValue(100);
    lyricsView->setLayoutManager(std::make_shared<NSLayoutManager>(measurer));
    controller->view();
    log.take();
  }

  static constexpr auto kSong =
      "get (name, artist, album, lyrics, rating, finish) of current track";
  static constexpr auto kState = "get player state as string";
  static constexpr auto kVolume = "get sound volume";
  static constexpr auto kArtwork = "tell artwork 1 of the current track to raw data";
  static constexpr auto kLyrics = "get lyrics of current track";
  static constexpr auto kPosition = "player position";

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
    scripts.answer(kArtwork, Descriptor::descriptorWithData(FakeImageDecoder::picture(7, 7)));
  }

  /// Runs `operation` as a block of the main queue, as the host and the controls do.
  void onMain(const std::function<void()>& operation) {
    dispatch_async(loop.mainQueue(), operation);
    loop.runTurn();
  }

  /// Runs everything that waits, on both queues, until nothing is left.
  void settle() {
    do {
      globalQueue.runAll();
    } while (loop.runTurn() || globalQueue.size() > 0);
  }

  /// A refresh from its start to its display.
  void refresh() {
    onMain([this] { controller->updateSongInfo(); });
    settle();
  }

  void tickAfter(std::chrono::milliseconds time) {
    clock.advance(time);
    loop.runTurn();
  }

  EventLog log;
  RecordingScriptRunner scripts;
  ManualClock clock;
  RunLoop loop{clock};
  ManualQueue globalQueue;
  FakeImageDecoder decoder;
  FixedFontFinder fonts;
  FixedTextMeasurer measurer;
  NSBundle bundle{CORVELLA_RESOURCES};

  template <typename View, typename... Arguments>
  std::shared_ptr<Recorded<View>> make(const std::string& name, Arguments&&... arguments) {
    return std::make_shared<Recorded<View>>(log, name, std::forward<Arguments>(arguments)...);
  }

  std::shared_ptr<NSImageView> albumArtView = make<NSImageView>("albumArtView");
  std::shared_ptr<NSTextField> songTitle = make<NSTextField>("songTitle");
  std::shared_ptr<NSTextField> songArtistAndAlbum = make<NSTextField>("songArtistAndAlbum");
  std::shared_ptr<NSLevelIndicator> songRatingIndicator =
      make<NSLevelIndicator>("songRatingIndicator");
  std::shared_ptr<NSView> cellView = make<NSView>("songRatingCell");
  std::shared_ptr<SongRatingLevelIndicatorCell> songRatingCell =
      std::make_shared<SongRatingLevelIndicatorCell>(NSCoder("cell", measurer, fonts));
  std::shared_ptr<NSButton> playButton = make<NSButton>("playButton");
  std::shared_ptr<NSButton> otherButton = make<NSButton>("otherButton");
  std::shared_ptr<NSSlider> soundVolume = make<NSSlider>("soundVolume");
  std::shared_ptr<NSProgressIndicator> progressBar = make<NSProgressIndicator>("progressBar");
  std::shared_ptr<NSButton> toggleLyricsButton = make<NSButton>("toggleLyricsButton");
  std::shared_ptr<LyricsTextView> lyricsView = make<LyricsTextView>(
      "lyricsView", NSMakeRect(0, 0, 300, 0), std::make_shared<NSTextContainer>(300));

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
  std::shared_ptr<TodayViewController> controller = std::make_shared<TodayViewController>(services);
  TodayViewControllerInspector inside{*controller};

 private:
  /// Stands in for the interface file.
  void instantiate(std::string_view, const NSBundle*, NSViewController& owner) const override {
    const std::vector<std::pair<std::string, std::shared_ptr<NSObject>>> outlets{
        {"view", std::make_shared<NSView>(NSMakeRect(0, 0, 320, 285))},
        {"albumArtView", albumArtView},
        {"songTitle", songTitle},
        {"songArtistAndAlbum", songArtistAndAlbum},
        {"songRatingIndicator", songRatingIndicator},
        {"songRatingCell", songRatingCell},
        {"playButton", playButton},
        {"soundVolume", soundVolume},
        {"progressBar", progressBar},
        {"toggleLyricsButton", toggleLyricsButton},
        {"lyricsView", lyricsView}};
    for (const auto& [name, object] : outlets) {
      if (!absentOutlets_.contains(name)) owner.connectOutlet(name, object);
    }
    owner.awakeFromNib();
  }

  std::set<std::string> absentOutlets_;
};

}  // namespace Corvella
