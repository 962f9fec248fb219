#include <QGuiApplication>
#include <algorithm>
#include <functional>
#include <iterator>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "extension/Curtain.h"
#include "extension/ExtensionThread.h"
#include "extension/WidgetDisplay.h"
#include "players/embedded/EmbeddedPlayer.h"
#include "tests/support/Eventually.h"
#include "tests/support/HostParts.h"
#include "tests/support/ScriptGate.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

/// All that a widget has told its host.
struct Told {
  WidgetDisplay display;
  std::vector<std::string> titles;  // What the title has said, one after the other.
  std::uint64_t answer = 0;
  std::uint64_t settled = 0;
  std::string failure;
};

class WatchingHost final : public WidgetHost {
 public:
  void displayChanged(WidgetSnapshot snapshot) override {
    const std::lock_guard lock(mutex_);
    told_.display.apply(std::move(snapshot));
    const auto& title = told_.display.content<TextFieldContent>("songTitle")->text;
    if (told_.titles.empty() || told_.titles.back() != title) told_.titles.push_back(title);
  }
  void settled(std::uint64_t number) override {
    const std::lock_guard lock(mutex_);
    told_.settled = number;
  }
  void answered(std::uint64_t number) override {
    const std::lock_guard lock(mutex_);
    told_.answer = number;
  }
  void startFailed(const std::string& reason) override {
    const std::lock_guard lock(mutex_);
    told_.failure = reason;
  }

  Told told() {
    const std::lock_guard lock(mutex_);
    return told_;
  }
  bool waitUntil(const std::function<bool(const Told&)>& condition) {
    return eventually([&] { return condition(told()); });
  }
  bool waitUntilSettled(ExtensionThread& extension, std::uint64_t number) {
    extension.settle(number);
    return waitUntil([number](const Told& told) { return told.settled == number; });
  }
  template <typename Content>
  double valueOf(const std::string& view) {
    return told().display.content<Content>(view)->value;
  }
  bool waitForFirstTitle() {
    return waitUntil([](const Told& told) {
      const auto* field = told.display.content<TextFieldContent>("songTitle");
      return field != nullptr && field->text == embeddedTracks()[0].track.name;
    });
  }

 private:
  std::mutex mutex_;
  Told told_;
};

class AnExtension : public testing::Test {
 protected:
  HostParts parts_;
  EmbeddedPlayer player_{parts_.clock, parts_.bundle};
  PlayerScriptRunner runner_{player_, shippedTargets()};
  ScriptGate gate_{runner_};
  WatchingHost host_;
};

/// The scripts that the user's input sends while the widget is busy with a first one.
class ABusyExtension : public AnExtension {
 protected:
  std::vector<std::string> sentAfter(const std::function<void(ExtensionThread&)>& input) {
    EXPECT_TRUE(player_.perform(PlaybackRequest::Pause));  // No ticks in between.
    ExtensionThread extension(parts_.services(), gate_, host_);
    extension.appear();
    EXPECT_TRUE(host_.waitForFirstTitle());
    gate_.close();
    const auto before = static_cast<std::ptrdiff_t>(gate_.scripts().size());
    extension.setValue("soundVolume", 1);
    EXPECT_TRUE(eventually([&] { return gate_.count("set sound volume to 1") == 1; }));
    input(extension);
    extension.ping(1);
    gate_.open();
    EXPECT_TRUE(host_.waitUntil([](const Told& told) { return told.answer == 1; }));
    const auto all = gate_.scripts();
    std::vector<std::string> sent;
    std::copy_if(all.begin() + before + 1, all.end(), std::back_inserter(sent),
                 [](const std::string& script) {
                   return testing::Matches(
                       testing::ContainsRegex(" to (set .*|next track|pause|play)$"))(script);
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

TEST_F(AnExtension, TurnsAPageWithoutShowingWhatLiesBetween) {
  ASSERT_TRUE(player_.perform(PlaybackRequest::Pause));
  ExtensionThread extension(parts_.services(), gate_, host_);
  extension.turnPage();  // Nobody sees it yet.
  extension.appear();
  ASSERT_TRUE(host_.waitUntilSettled(extension, 1));
  EXPECT_EQ(gate_.count("to running"), 1);
  ASSERT_TRUE(player_.perform(PlaybackRequest::Next));
  ASSERT_TRUE(player_.setSoundVolume(11));
  parts_.clock.advance(std::chrono::seconds(7));
  gate_.close();
  extension.turnPage();
  ASSERT_TRUE(eventually([&] { return gate_.isHoldingScripts(); }));
  for (int i = 0; i < 5; ++i) extension.turnPage();
  gate_.open();
  ASSERT_TRUE(host_.waitUntilSettled(extension, 2));
  // One page was under way, and all the others are one more.
  EXPECT_EQ(gate_.count("to running"), 3);
  EXPECT_THAT(host_.told().titles,
              testing::ElementsAre(embeddedTracks()[0].track.name, embeddedTracks()[1].track.name));
  EXPECT_EQ(host_.valueOf<SliderContent>("soundVolume"), 11);
  extension.disappear();
  extension.turnPage();
  ASSERT_TRUE(host_.waitUntilSettled(extension, 3));
  EXPECT_EQ(gate_.count("to running"), 3);
}

TEST_F(AnExtension, ShowsAtOnceWhereAPausedPlayerStands) {
  parts_.clock.advance(std::chrono::seconds(7));
  ASSERT_TRUE(player_.perform(PlaybackRequest::Pause));
  ExtensionThread extension(parts_.services(), gate_, host_);
  extension.appear();
  ASSERT_TRUE(host_.waitUntilSettled(extension, 1));
  EXPECT_EQ(host_.valueOf<ProgressContent>("progressBar"), 7);
}

TEST_F(AnExtension, ShowsWhatThereIsWhenAPageTakesLong) {
  ExtensionThread extension(parts_.services(), gate_, host_);
  gate_.close();
  extension.appear();
  ASSERT_TRUE(eventually([&] { return gate_.isHoldingScripts(); }));
  EXPECT_TRUE(host_.told().titles.empty());
  parts_.clock.advance(Curtain::kLongest);
  gate_.open();
  EXPECT_TRUE(host_.waitForFirstTitle());
  EXPECT_THAT(host_.told().titles, testing::Contains("No Song Playing"));
}

TEST_F(AnExtension, EndsCleanlyWhileScriptsAndRefreshesAreUnderWay) {
  for (int round = 0; round < 10; ++round) {
    WatchingHost host;
    ExtensionThread extension(parts_.services(), gate_, host);
    extension.appear();
    for (int i = 0; i < round; ++i)
      extension.click(i % 2 == 0 ? "nextButton" : "toggleLyricsButton");
    if (round % 3 == 0) host.waitUntil([](const Told& told) { return !told.titles.empty(); });
  }
}

TEST_F(AnExtension, WithoutItsInterfaceFileSaysWhyItDidNotStart) {
  const TemporaryFolder folder;
  folder.write("Info.plist", "<plist/>");
  const NSBundle bundle(folder.path());
  ExtensionThread extension(parts_.services(bundle), gate_, host_);
  extension.appear();
  ASSERT_TRUE(host_.waitUntil([](const Told& told) { return !told.failure.empty(); }));
  EXPECT_THAT(host_.told().failure, testing::HasSubstr("Info.plist"));
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleMock(&argc, argv);
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
