#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "host/ExtensionThread.h"
#include "host/FontconfigFinder.h"
#include "host/QtImageDecoder.h"
#include "host/QtTextMeasurer.h"
#include "host/WidgetDisplay.h"
#include "players/embedded/EmbeddedPlayer.h"
#include "players/mpris/MprisPlayer.h"
#include "tests/support/Eventually.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RealMpv.h"
#include "tests/support/ScriptGate.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TaggedTrack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;

/// Keeps the display up to date and waits for it to show something.
class WatchingHost final : public WidgetHost {
 public:
  void displayChanged(WidgetSnapshot snapshot) override {
    const std::lock_guard lock(mutex_);
    ++snapshots_;
    display_.apply(std::move(snapshot));
    changed_.notify_all();
  }
  void updateReported(NCUpdateResult result) override {
    const std::lock_guard lock(mutex_);
    reports_.push_back(result);
    changed_.notify_all();
  }
  void answered(std::uint64_t number) override {
    const std::lock_guard lock(mutex_);
    answered_ = number;
    changed_.notify_all();
  }
  void startFailed(const std::string& reason) override {
    const std::lock_guard lock(mutex_);
    failure_ = reason;
    changed_.notify_all();
  }

  bool waitForAnswer(std::uint64_t number) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, 20s, [&] { return answered_ == number; });
  }
  bool waitUntil(const std::function<bool(const WidgetDisplay&)>& shown) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, 20s, [&] { return shown(display_); });
  }
  bool waitForTitle(const std::string& title) {
    return waitUntil([&](const auto& display) {
      const auto* field = display.template content<TextFieldContent>("songTitle");
      return field != nullptr && field->text == title;
    });
  }
  bool waitForButton(const std::string& button, const std::string& title) {
    return waitUntil([&](const auto& display) {
      const auto* content = display.template content<ButtonContent>(button);
      return content != nullptr && content->title == title;
    });
  }
  std::vector<NCUpdateResult> reports() {
    const std::lock_guard lock(mutex_);
    return reports_;
  }
  std::string failure() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, 20s, [&] { return !failure_.empty(); });
    return failure_;
  }
  WidgetDisplay display() {
    const std::lock_guard lock(mutex_);
    return display_;
  }
  int snapshots() {
    const std::lock_guard lock(mutex_);
    return snapshots_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  WidgetDisplay display_;
  std::vector<NCUpdateResult> reports_;
  std::string failure_;
  int snapshots_ = 0;
  std::uint64_t answered_ = 0;
};

class AnExtension : public testing::Test {
 protected:
  HostServices services(ScriptRunner& runner) {
    return {.clock = clock_,
            .scriptRunner = runner,
            .bundle = bundle_,
            .imageDecoder = decoder_,
            .fontFinder = fonts_,
            .textMeasurer = measurer_};
  }

  SteadyClock clock_;
  NSBundle bundle_{CORVELLA_RESOURCES};
  QtImageDecoder decoder_;
  FontconfigFinder fonts_;
  QtTextMeasurer measurer_;
  EmbeddedPlayer player_{clock_, bundle_};
  PlayerScriptRunner runner_{player_, shippedTargets()};
  ScriptGate gate_{runner_};
  WatchingHost host_;
};

TEST_F(AnExtension, ShowsATrackAndObeysItsUser) {
  const auto tracks = embeddedTracks();
  ExtensionThread extension(services(gate_), host_);
  extension.performUpdate();
  extension.appear();
  ASSERT_TRUE(host_.waitForTitle(tracks[0].track.name));
  EXPECT_THAT(host_.reports(), testing::ElementsAre(NCUpdateResultNewData, NCUpdateResultNewData));
  EXPECT_EQ(host_.display().content<RatingContent>("songRatingIndicator")->stars,
            tracks[0].track.rating / 20);

  extension.click("nextButton");
  ASSERT_TRUE(host_.waitForTitle(tracks[1].track.name));
  extension.click("previousButton");
  ASSERT_TRUE(host_.waitForTitle(tracks[0].track.name));
  extension.click("playButton");
  ASSERT_TRUE(host_.waitForButton("playButton", "\u25b6"));
  extension.setValue("songRatingIndicator", 2);
  extension.setValue("soundVolume", 12);
  ASSERT_TRUE(gate_.waitForScript("set sound volume to 12"));
  EXPECT_TRUE(eventually([&] { return *player_.soundVolume() == 12; }));
  EXPECT_EQ(player_.currentTrack()->rating, 40);
}

TEST_F(AnExtension, GrowsByTheLyricsAndGivesTheRoomToTheirView) {
  ExtensionThread extension(services(gate_), host_);
  extension.appear();
  ASSERT_TRUE(host_.waitForButton("toggleLyricsButton", "Show Lyrics"));
  ASSERT_TRUE(host_.waitForTitle(embeddedTracks()[0].track.name));
  extension.click("toggleLyricsButton");
  ASSERT_TRUE(host_.waitForButton("toggleLyricsButton", "Hide Lyrics"));
  const auto unfolded = host_.display();
  EXPECT_GT(unfolded.size().height, 285 + 100);
  EXPECT_EQ(unfolded.view("lyricsView")->frame.size.height, unfolded.size().height - 285);
  extension.click("toggleLyricsButton");
  EXPECT_TRUE(host_.waitUntil([](const auto& display) { return display.size().height == 285; }));
}

/// The scripts that the user's input sends while the widget is busy with a first one.
class ABusyExtension : public AnExtension {
 protected:
  std::vector<std::string> sentAfter(const std::function<void(ExtensionThread&)>& input) {
    EXPECT_TRUE(player_.perform(PlaybackRequest::Pause));  // No ticks in between.
    ExtensionThread extension(services(gate_), host_);
    extension.appear();
    EXPECT_TRUE(host_.waitForTitle(embeddedTracks()[0].track.name));
    gate_.close();
    const auto before = static_cast<std::ptrdiff_t>(gate_.scripts().size());
    extension.setValue("soundVolume", 1);
    EXPECT_TRUE(gate_.waitForScript("set sound volume to 1", before));
    input(extension);
    extension.ping(1);
    gate_.open();
    EXPECT_TRUE(host_.waitForAnswer(1));
    const auto all = gate_.scripts();
    std::vector<std::string> sent;
    std::copy_if(all.begin() + before + 1, all.end(), std::back_inserter(sent),
                 [](const std::string& script) {
                   return script.find("to set ") != std::string::npos ||
                          script.ends_with("to next track") || script.ends_with("to pause") ||
                          script.ends_with("to play");
                 });
    return sent;
  }
};

TEST_F(ABusyExtension, SendsTheNewestValueOfEachControl) {
  const auto sent = sentAfter([](ExtensionThread& extension) {
    for (int volume = 2; volume <= 50; ++volume) extension.setValue("soundVolume", volume);
    for (int stars = 1; stars <= 5; ++stars) extension.setValue("songRatingIndicator", stars);
  });
  EXPECT_THAT(sent, testing::ElementsAre(testing::EndsWith("set sound volume to 50"),
                                         testing::EndsWith("set rating of current track to 100")));
}

TEST_F(ABusyExtension, KeepsValuesAndClicksInOrder) {
  const auto sent = sentAfter([](ExtensionThread& extension) {
    extension.setValue("songRatingIndicator", 1);
    extension.click("nextButton");
    extension.setValue("songRatingIndicator", 5);
    extension.click("playButton");
    extension.click("playButton");
  });
  EXPECT_THAT(sent,
              testing::ElementsAre(testing::EndsWith("set rating of current track to 20"),
                                   testing::EndsWith("to next track"),
                                   testing::EndsWith("set rating of current track to 100"),
                                   testing::EndsWith("to play"), testing::EndsWith("to pause")));
}

TEST_F(AnExtension, StartsNoScriptOnceItEnds) {
  EndingScriptRunner runner(gate_);
  EXPECT_NE(runner.initWithSource("one"), nullptr);
  runner.end();
  EXPECT_EQ(runner.initWithSource("two"), nullptr);
  EXPECT_THAT(gate_.scripts(), testing::ElementsAre("one"));
}

TEST_F(AnExtension, TellsOfUpdatesAfterTheDisplayAndOfNothingTwice) {
  ExtensionThread extension(services(gate_), host_);
  extension.appear();
  ASSERT_TRUE(host_.waitForTitle(embeddedTracks()[0].track.name));
  extension.click("playButton");
  ASSERT_TRUE(host_.waitForButton("playButton", "\u25b6"));
  const auto before = host_.snapshots();
  extension.click("nosuchButton");
  extension.performUpdate();
  ASSERT_TRUE(eventually([&] { return !host_.reports().empty(); }));
  EXPECT_EQ(host_.snapshots(), before);
}

TEST_F(AnExtension, EndsCleanlyWhileScriptsAndRefreshesAreUnderWay) {
  for (int round = 0; round < 10; ++round) {
    WatchingHost host;
    ExtensionThread extension(services(gate_), host);
    extension.appear();
    for (int i = 0; i < round; ++i)
      extension.click(i % 2 == 0 ? "nextButton" : "toggleLyricsButton");
    if (round % 3 == 0)
      host.waitUntil([](const auto& display) { return !display.views().empty(); });
  }
}

TEST_F(AnExtension, WithoutItsInterfaceFileSaysWhyItDidNotStart) {
  const TemporaryFolder folder;
  folder.write("Info.plist", "<plist/>");
  const NSBundle bundle(folder.path());
  auto broken = services(gate_);
  ExtensionThread extension(HostServices{.clock = broken.clock,
                                         .scriptRunner = broken.scriptRunner,
                                         .bundle = bundle,
                                         .imageDecoder = broken.imageDecoder,
                                         .fontFinder = broken.fontFinder,
                                         .textMeasurer = broken.textMeasurer},
                            host_);
  extension.appear();
  EXPECT_THAT(host_.failure(), testing::HasSubstr("Info.plist"));
}

TEST_F(AnExtension, FollowsARealPlayerUntilItIsKilled) {
  const TemporaryFolder folder;
  const auto first = folder.path() / "one.flac";
  const auto second = folder.path() / "two.flac";
  const auto cover = CORVELLA_RESOURCES "/covers/harbour.png";
  makeTrack(first, {.title = "One", .artist = "A", .album = "B", .lyrics = "la", .cover = cover});
  makeTrack(second, {.title = "Two", .artist = "A", .album = "B", .lyrics = "", .cover = cover});
  PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  RealMpv mpv(bus.address(), {.files = {first, second}});
  MprisPlayer player;
  PlayerScriptRunner runner(player, shippedTargets());
  ExtensionThread extension(services(runner), host_);
  extension.appear();
  ASSERT_TRUE(host_.waitForTitle("One"));
  EXPECT_TRUE(host_.waitUntil([](const auto& display) {
    const auto* bar = display.template content<ProgressContent>("progressBar");
    return bar != nullptr && bar->value > 0 && bar->maxValue == 30;
  }));
  extension.click("nextButton");
  ASSERT_TRUE(host_.waitForTitle("Two"));
  EXPECT_TRUE(host_.waitForButton("toggleLyricsButton", "No Lyrics"));
  mpv.kill();
  EXPECT_TRUE(host_.waitForTitle("No Song Playing"));
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleMock(&argc, argv);
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
