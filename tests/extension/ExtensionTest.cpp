#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "extension/Curtain.h"
#include "extension/ExtensionThread.h"
#include "extension/SnapshotTaker.h"
#include "extension/WidgetDisplay.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "tests/support/Eventually.h"
#include "tests/support/HostParts.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

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
  void settled(std::uint64_t number) override { set(&Told::settled, number); }
  void answered(std::uint64_t number) override { set(&Told::answer, number); }
  void startFailed(const std::string& reason) override { set(&Told::failure, reason); }

  Told told() {
    const std::lock_guard lock(mutex_);
    return told_;
  }
  bool waitUntil(const std::function<bool(const Told&)>& condition) {
    return eventually([&] { return condition(told()); });
  }

 private:
  template <typename Value>
  void set(Value Told::*what, const Value& value) {
    const std::lock_guard lock(mutex_);
    told_.*what = value;
  }

  std::mutex mutex_;
  Told told_;
};

class AnExtension : public testing::Test, public HostParts {
 protected:
  bool showsTheFirstTrack() {
    const auto name = embeddedTracks()[0].track.name;
    return host.waitUntil(
        [&](const Told& told) { return !told.titles.empty() && told.titles.back() == name; });
  }
  bool settles() {
    extension.settle(++settlings_);
    return host.waitUntil([this](const Told& told) { return told.settled == settlings_; });
  }

  WatchingHost host;
  ExtensionThread extension{services(), gate, host};

 private:
  std::uint64_t settlings_ = 0;
};

TEST_F(AnExtension, ThatWasBusySendsTheNewestValuesAndAllClicksInOrder) {
  ASSERT_TRUE(player.perform(PlaybackRequest::Pause));  // No ticks in between.
  extension.appear();
  ASSERT_TRUE(showsTheFirstTrack());
  gate.close();
  extension.setValue("soundVolume", 1);
  ASSERT_TRUE(eventually([&] { return gate.count("set sound volume to 1") == 1; }));
  for (int volume = 2; volume <= 50; ++volume) extension.setValue("soundVolume", volume);
  for (int stars = 1; stars <= 5; ++stars) extension.setValue("songRatingIndicator", stars);
  extension.click("nextButton");
  extension.setValue("songRatingIndicator", 1);
  extension.click("playButton");
  extension.click("playButton");
  extension.ping(1);
  gate.open();
  ASSERT_TRUE(host.waitUntil([](const Told& told) { return told.answer == 1; }));
  std::vector<std::string> sent;
  for (const auto& script : gate.scripts()) {
    const auto command = script.substr(script.find(" to ") + 4);
    const std::regex changesSomething("set .*|next track|pause|play");
    if (std::regex_match(command, changesSomething)) sent.push_back(command);
  }
  EXPECT_THAT(sent, ElementsAre("set sound volume to 1", "set sound volume to 50",
                                "set rating of current track to 100", "next track",
                                "set rating of current track to 20", "play", "pause"));
}

TEST_F(AnExtension, StartsNoScriptOnceItEnds) {
  EndingScriptRunner ending(gate);
  EXPECT_NE(ending.initWithSource("one"), nullptr);
  ending.end();
  EXPECT_EQ(ending.initWithSource("two"), nullptr);
  EXPECT_THAT(gate.scripts(), ElementsAre("one"));
}

TEST_F(AnExtension, TurnsAPageWithoutShowingWhatLiesBetween) {
  clock.advance(std::chrono::seconds(9));
  ASSERT_TRUE(player.perform(PlaybackRequest::Pause));
  extension.turnPage();  // Nobody sees it yet.
  extension.appear();
  ASSERT_TRUE(settles());
  EXPECT_EQ(gate.appearances(), 1);
  EXPECT_EQ(host.told().display.content<ProgressContent>("progressBar")->value, 9);
  ASSERT_TRUE(player.perform(PlaybackRequest::Next));
  ASSERT_TRUE(player.setSoundVolume(11));
  clock.advance(std::chrono::seconds(7));
  gate.close();
  extension.turnPage();
  ASSERT_TRUE(eventually([&] { return gate.isHoldingScripts(); }));
  for (int i = 0; i < 5; ++i) extension.turnPage();
  clock.advance(Curtain::kLongestAtOpening);  // A page may take longer than an opening.
  gate.open();
  ASSERT_TRUE(settles());
  // One page was under way, and all the others are one more.
  EXPECT_EQ(gate.appearances(), 3);
  EXPECT_THAT(host.told().titles,
              ElementsAre(embeddedTracks()[0].track.name, embeddedTracks()[1].track.name));
  EXPECT_EQ(host.told().display.content<SliderContent>("soundVolume")->value, 11);
  extension.disappear();
  extension.turnPage();
  ASSERT_TRUE(settles());
  EXPECT_EQ(gate.appearances(), 3);
}

TEST_F(AnExtension, ShowsWhatThereIsWhenAPageTakesLong) {
  gate.close();
  extension.appear();
  ASSERT_TRUE(eventually([&] { return gate.isHoldingScripts(); }));
  EXPECT_TRUE(host.told().titles.empty());
  clock.advance(Curtain::kLongestAtOpening);
  gate.open();
  EXPECT_TRUE(showsTheFirstTrack());
  EXPECT_THAT(host.told().titles, testing::Contains("No Song Playing"));
}

TEST_F(AnExtension, EndsCleanlyWhileScriptsAndRefreshesAreUnderWay) {
  for (int round = 0; round < 10; ++round) {
    WatchingHost watching;
    ExtensionThread ending(services(), gate, watching);
    ending.appear();
    for (int i = 0; i < round; ++i) ending.click(i % 2 == 0 ? "nextButton" : "toggleLyricsButton");
    if (round % 3 == 0) watching.waitUntil([](const Told& told) { return !told.titles.empty(); });
  }
}

TEST_F(AnExtension, WithoutItsInterfaceFileSaysWhyItDidNotStart) {
  const TemporaryFolder folder;
  folder.write("Info.plist", "<plist/>");
  const NSBundle empty(folder.path());
  ExtensionThread failing(services(&empty), gate, host);
  failing.appear();
  ASSERT_TRUE(host.waitUntil([](const Told& told) { return !told.failure.empty(); }));
  EXPECT_THAT(host.told().failure, testing::HasSubstr("Info.plist"));
}

TEST(ASnapshot, HoldsWhatChangedSinceTheLastOneAtItsPlaceInTheWidget) {
  const auto root = std::make_shared<NSView>(NSRect{{0, 0}, {320, 285}});
  const auto box = std::make_shared<NSView>(NSRect{{10, 20}, {100, 100}});
  const auto stars = std::make_shared<NSLevelIndicator>(NSRect{{3, 4}, {50, 24}});
  stars->setMaxValue(5);
  stars->setIntegerValue(3);
  stars->setCell(NSLevelIndicatorCell::initWithLevelIndicatorStyle(NSRatingLevelIndicatorStyle));
  root->addSubview(box);
  box->addSubview(stars);
  EXPECT_EQ(SnapshotTaker::takeChangedViews(*root).size(), 3U);
  EXPECT_TRUE(SnapshotTaker::takeChangedViews(*root).empty());

  stars->cell()->setHighlighted(true);
  const auto changed = SnapshotTaker::takeChangedViews(*root);
  ASSERT_EQ(changed.size(), 1U);
  EXPECT_EQ(changed[0].frame, (NSRect{{13, 24}, {50, 24}}));
  const auto content = std::get<RatingContent>(changed[0].content);
  EXPECT_EQ(content.stars, 3);
  EXPECT_EQ(content.mostStars, 5);
  EXPECT_TRUE(content.highlighted);
  EXPECT_FALSE(content.editable);
  stars->setIntegerValue(3);
  EXPECT_TRUE(SnapshotTaker::takeChangedViews(*root).empty());
}

}  // namespace
}  // namespace Corvella
