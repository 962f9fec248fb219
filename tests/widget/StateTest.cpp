#include <algorithm>
#include <optional>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

/// The ten outlets by their names, each null where nothing is connected.
std::map<std::string, std::shared_ptr<NSObject>> outletsOf(const TodayViewController& controller) {
  return {{"albumArtView", controller.albumArtView()},
          {"songTitle", controller.songTitle()},
          {"songArtistAndAlbum", controller.songArtistAndAlbum()},
          {"songRatingIndicator", controller.songRatingIndicator()},
          {"songRatingCell", controller.songRatingCell()},
          {"playButton", controller.playButton()},
          {"soundVolume", controller.soundVolume()},
          {"progressBar", controller.progressBar()},
          {"toggleLyricsButton", controller.toggleLyricsButton()},
          {"lyricsView", controller.lyricsView()}};
}

class AController : public testing::Test, protected WidgetRig {};

TEST_F(AController, HasTheSameInitialStateHoweverItIsMade) {
  coder.encodeString("nibName", "Archived");
  for (const auto& made :
       {std::make_shared<Widget>(services), std::make_shared<Widget>(services, "Other", nullptr),
        std::make_shared<Widget>(services, std::nullopt, nullptr),
        std::make_shared<Widget>(services, coder)}) {
    const TodayViewControllerInspector state{*made};
    EXPECT_EQ(made->nibName(), "TodayViewController");
    EXPECT_FALSE(state.expanded() || state.hasCompletionHandler() || state.timer());
    EXPECT_EQ(state.songRating(), 0);
    for (const auto& [name, object] : outletsOf(*made)) EXPECT_EQ(object, nullptr) << name;
  }
  EXPECT_TRUE(scripts.scripts().empty());
}

TEST_F(AController, FoldsThePanelWhenItAwakes) {
  inside.expanded() = true;
  controller->awakeFromNib();
  EXPECT_FALSE(inside.expanded());
}

TEST_F(AController, HasTenOutletsByNameAndClassAndHoldsTheLyricsViewAlone) {
  EXPECT_EQ(outletsOf(*controller), outlets);
  EXPECT_FALSE(controller->connectOutlet("playButton", outlets["songTitle"]));
  EXPECT_FALSE(controller->connectOutlet("nonesuch", outlets["songTitle"]));
  EXPECT_FALSE(controller->connectAction("nonesuch:", *otherButton));
  EXPECT_FALSE(controller->connectAction("updateSoundVolume:", *otherButton));

  outlets.clear();
  for (const auto& [name, object] : outletsOf(*controller)) {
    EXPECT_EQ(object != nullptr, name == "lyricsView") << name;
  }
  const std::weak_ptr<LyricsTextView> lyrics = controller->lyricsView();
  controller->setLyricsView(nullptr);
  EXPECT_TRUE(lyrics.expired());
}

/// What every operation does to the player, the host and the outlets that are not absent.
EventLog eventsOfEveryOperation(const std::set<std::string>& absent,
                                const std::set<std::string>& ignored) {
  WidgetRig rig(absent);
  auto& controller = *rig.controller;
  NSLevelIndicator stars;
  NSSlider volume;
  rig.playerPlays("Song");
  controller.widgetPerformUpdateWithCompletionHandler(rig.report());
  const std::vector<std::function<void()>> operations{
      [&] { controller.viewWillAppear(); },
      [&] { controller.seeMoreClicked(*rig.otherButton); },
      [&] { controller.seeMoreClicked(*rig.otherButton); },
      [&] { controller.updateRating(stars); },
      [&] { controller.updateSoundVolume(volume); },
      [&] { controller.previousButtonClicked(*rig.otherButton); },
      [&] {
        rig.playerPlays("Next");
        rig.clock.advance(std::chrono::seconds(1));
      },
      [&] { controller.playButtonClicked(*rig.otherButton); },
      [&] { controller.viewWillDisappear(); }};
  for (const auto& operation : operations) {
    rig.onMain(operation);
    rig.settle();
  }
  auto events = rig.take();
  std::erase_if(events, [&](const std::string& event) {
    return ignored.contains(event) || event.starts_with("height ");
  });
  return events;
}

TEST(AnAbsentOutlet, SkipsItsOwnStepsAlone) {
  std::vector<std::set<std::string>> rows{{}};
  for (const auto& [name, object] : WidgetRig().outlets) {
    rows.push_back({name});
    rows.front().insert(name);
  }
  for (const auto& absent : rows) {
    EXPECT_EQ(eventsOfEveryOperation(absent, {}), eventsOfEveryOperation({}, absent))
        << "without " << *absent.begin();
  }
}

struct ActionRow {
  std::string selector;
  std::shared_ptr<NSControl> control;
  std::string script;
};

TEST_F(AController, SendsEachActionsOwnScriptAndIsNotHeldByItsControls) {
  playerPlays("Song");
  playerRuns("paused");
  refresh();  // Shows 3 stars and a volume of 35.
  const std::vector<ActionRow> rows{
      {"previousButtonClicked:", otherButton, "previous track"},
      {"nextButtonClicked:", otherButton, "next track"},
      {"playButtonClicked:", otherButton, "play"},
      {"seeMoreClicked:", otherButton, kLyrics},
      {"updateRating:", controller->songRatingIndicator(), "set rating of current track to 60"},
      {"updateSoundVolume:", controller->soundVolume(), "set sound volume to 35"}};
  for (const auto& [selector, control, script] : rows) {
    ASSERT_TRUE(controller->connectAction(selector, *control));
    take();
    onMain([&sender = control] { EXPECT_TRUE(sender->sendAction()); });
    settle();
    for (const auto& row : rows) {
      EXPECT_EQ(std::ranges::count(log, row.script), row.selector == selector)
          << row.script << " from " << selector;
    }
  }
  const std::weak_ptr<Widget> weak = std::exchange(controller, nullptr);
  EXPECT_TRUE(weak.expired());
  otherButton->sendAction();  // The controller is gone by now.
}

}  // namespace
}  // namespace Corvella
