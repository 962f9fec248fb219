// What the widget's own work costs: a refresh, a tick, staying hidden, changing tracks, unfolding
// lyrics.

#include <QGuiApplication>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <unistd.h>

#include "benchmarks/Ratio.h"
#include "benchmarks/RawReader.h"
#include "benchmarks/SystemFigures.h"
#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "extension/ExtensionThread.h"
#include "extension/WidgetDisplay.h"
#include "host/services/FontconfigFinder.h"
#include "host/services/QtImageDecoder.h"
#include "host/services/QtTextMeasurer.h"
#include "platform/appkit/NSNibLoader.h"
#include "platform/foundation/NSClassRegistry.h"
#include "players/embedded/EmbeddedPlayer.h"
#include "tests/support/FakeImageDecoder.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"
#include "tests/support/ManualQueue.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RealMpv.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TaggedTrack.h"
#include "tests/support/TemporaryFolder.h"
#include "widget/TodayViewController.h"

namespace Corvella {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// The widget on one thread, step by step; pictures are not decoded.
class SteppedWidget {
 public:
  explicit SteppedWidget(MusicPlayer& player) : runner_(player, shippedTargets()) {
    decoder_.knowAnythingElseAs(512, 512);
    classes_.registerClass("Corvella.SongRatingLevelIndicatorCell",
                           NSClass::decoded<SongRatingLevelIndicatorCell>());
    classes_.registerClass("Corvella.LyricsTextView", NSClass::decoded<LyricsTextView>());
    classes_.registerClass("Corvella.TodayViewController",
                           NSClass::initialised<TodayViewController>(nullptr));
    controller_->view();
    controller_->viewWillAppear();
    settle();
  }

  void refresh() {
    controller_->updateSongInfo();
    settle();
  }
  void tick() { controller_->updateProgress(nullptr); }

 private:
  void settle() {
    globalQueue_.runAll();
    runLoop_.runTurn();
  }

  SteadyClock clock_;
  PlayerScriptRunner runner_;
  NSBundle bundle_{CORVELLA_RESOURCES};
  FakeImageDecoder decoder_;
  FixedFontFinder fonts_;
  FixedTextMeasurer measurer_;
  NSClassRegistry classes_;
  NSNibLoader loader_{bundle_,
                      {.classes = classes_, .textMeasurer = measurer_, .fontFinder = fonts_}};
  RunLoop runLoop_{clock_};
  ManualQueue globalQueue_;
  std::shared_ptr<TodayViewController> controller_ =
      std::make_shared<TodayViewController>(TodayViewServices{.interfaceLoader = loader_,
                                                              .mainRunLoop = runLoop_,
                                                              .mainQueue = runLoop_.mainQueue(),
                                                              .globalQueue = globalQueue_,
                                                              .scriptRunner = runner_,
                                                              .bundle = bundle_,
                                                              .imageDecoder = decoder_,
                                                              .fontFinder = fonts_});
};

void measureSteps() {
  const TemporaryFolder folder;
  const auto track = folder.path() / "track.flac";
  makeTrack(track, {.title = "A Title",
                    .artist = "An Artist",
                    .album = "An Album",
                    .lyrics = "",
                    .cover = CORVELLA_RESOURCES "/covers/harbour.png",
                    .seconds = 600});
  PrivateBus bus;
  const RealMpv mpv(bus.address(), {.files = {track}});
  RawReader raw(bus.address(), mpv.busName());
  const auto readOnce = [&] { raw.read("Position"); };

  const SteadyClock clock;
  const NSBundle bundle(CORVELLA_RESOURCES);
  EmbeddedPlayer player(clock, bundle);
  SteppedWidget widget(player);
  printRatio("refresh with its display step / one raw read",
             measureRatio([&] { widget.refresh(); }, readOnce, 200, 20, 300), 0.1);
  printRatio("tick / one raw read", measureRatio([&] { widget.tick(); }, readOnce, 1000, 20, 300),
             0.03);
}

/// Waits for what the widget shows.
class Host final : public WidgetHost {
 public:
  void displayChanged(WidgetSnapshot snapshot) override {
    const std::lock_guard lock(mutex_);
    display_.apply(std::move(snapshot));
    changed_.notify_all();
  }
  void startFailed(const std::string& reason) override {
    std::fprintf(stderr, "%s\n", reason.c_str());
  }

  std::string title() {
    const std::lock_guard lock(mutex_);
    const auto* field = display_.content<TextFieldContent>("songTitle");
    return field != nullptr ? field->text : "";
  }
  template <typename Condition>
  void waitFor(Condition condition) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, seconds(60), [&] { return condition(display_); });
  }
  void waitForTitle(const std::string& title) {
    waitFor([&](const WidgetDisplay& display) {
      const auto* field = display.content<TextFieldContent>("songTitle");
      return field != nullptr && field->text == title;
    });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  WidgetDisplay display_;
};

/// Counts the scripts that go through.
class CountingRunner final : public ScriptRunner {
 public:
  explicit CountingRunner(ScriptRunner& runner) : runner_(runner) {}
  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override {
    ++count;
    return runner_.initWithSource(std::move(source));
  }
  std::atomic<int> count = 0;

 private:
  ScriptRunner& runner_;
};

/// The widget on its own thread with all of Qt's services.
struct WholeWidget {
  explicit WholeWidget(std::vector<EmbeddedTrack> tracks)
      : player(clock, bundle, std::move(tracks)) {}

  SteadyClock clock;
  NSBundle bundle{CORVELLA_RESOURCES};
  QtImageDecoder decoder;
  FontconfigFinder fonts;
  QtTextMeasurer measurer;
  EmbeddedPlayer player;
  PlayerScriptRunner runner{player, shippedTargets()};
  CountingRunner counting{runner};
  Host host;
  ExtensionThread extension{{.clock = clock,
                             .bundle = bundle,
                             .imageDecoder = decoder,
                             .fontFinder = fonts,
                             .textMeasurer = measurer},
                            counting,
                            host};
};

void measureHidden() {
  WholeWidget widget(embeddedTracks());
  widget.extension.appear();
  widget.host.waitForTitle(embeddedTracks()[0].track.name);
  widget.extension.disappear();
  std::this_thread::sleep_for(milliseconds(500));
  const double before = SystemFigures::sleeps(getpid(), gettid());
  const int scripts = widget.counting.count;
  std::this_thread::sleep_for(seconds(5));
  std::printf("hidden for 5 s: %.0f wake-ups, %d scripts; at most 0, 0\n",
              SystemFigures::sleeps(getpid(), gettid()) - before, widget.counting.count - scripts);
}

void measureGrowth() {
  auto tracks = embeddedTracks();
  std::erase_if(tracks, [](const EmbeddedTrack& track) { return track.cover.empty(); });
  WholeWidget widget(tracks);
  widget.extension.appear();
  widget.host.waitForTitle(tracks[0].track.name);
  std::size_t current = 0;
  const auto change = [&](int times) {
    for (int i = 0; i < times; ++i) {
      current = (current + 1) % tracks.size();
      widget.extension.click("nextButton");
      widget.host.waitForTitle(tracks[current].track.name);
    }
  };
  change(200);
  const double before = SystemFigures::residentMegabytes(getpid());
  change(1000);
  std::printf("growth over 1,000 track changes: %.2f MB; at most 1 MB\n",
              SystemFigures::residentMegabytes(getpid()) - before);
}

EmbeddedTrack trackWithLyrics(std::size_t bytes) {
  const std::string line = "the river says nothing and I love it all the same\n";
  std::string lyrics;
  while (lyrics.size() < bytes) lyrics += line;
  lyrics.resize(bytes);
  EmbeddedTrack track = embeddedTracks().front();
  track.track.lyrics = lyrics;
  return track;
}

double unfoldingMilliseconds(std::size_t bytes) {
  WholeWidget widget({trackWithLyrics(bytes)});
  widget.extension.appear();
  widget.host.waitFor(
      [](const auto& display) { return display.preferredContentSize().has_value(); });
  const auto start = std::chrono::steady_clock::now();
  widget.extension.click("toggleLyricsButton");
  widget.host.waitFor([](const auto& display) {
    const auto* button = display.template content<ButtonContent>("toggleLyricsButton");
    return button->title == "Hide Lyrics";
  });
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

void measureUnfolding() {
  unfoldingMilliseconds(1000);
  double before = 0;
  for (const std::size_t bytes : {1'000UL, 10'000UL, 100'000UL, 1'000'000UL}) {
    double best = unfoldingMilliseconds(bytes);
    for (int i = 0; i < 4; ++i) best = std::min(best, unfoldingMilliseconds(bytes));
    std::printf("unfolding %7zu bytes of lyrics: %8.2f ms", bytes, best);
    if (before > 0) std::printf(", %.1f times the tenth of it", best / before);
    std::printf("\n");
    before = best;
  }
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  try {
    Corvella::measureSteps();
    Corvella::measureHidden();
    Corvella::measureGrowth();
    Corvella::measureUnfolding();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_widget: %s\n", error.what());
    return 1;
  }
}
