#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

TEST(ANewController, HasItsInitialStateAndHasRunNoScript) {
  const WidgetRig rig;
  const auto controller = std::make_shared<TodayViewController>(rig.services);
  const TodayViewControllerInspector inside(*controller);
  EXPECT_FALSE(inside.expanded());
  EXPECT_EQ(inside.songRating(), 0);
  EXPECT_FALSE(inside.hasCompletionHandler());
  EXPECT_EQ(inside.timer(), nullptr);
  EXPECT_EQ(controller->songTitle(), nullptr);
  EXPECT_EQ(controller->lyricsView(), nullptr);
  EXPECT_TRUE(rig.scripts.scripts().empty());
}

TEST(ANewController, AnswersTheSameInterfaceFileWhateverNameItGot) {
  const WidgetRig rig;
  EXPECT_EQ(TodayViewController(rig.services).nibName(), "TodayViewController");
  EXPECT_EQ(TodayViewController(rig.services, "Other", nullptr).nibName(), "TodayViewController");
}

TEST(Awakening, FoldsThePanel) {
  WidgetRig rig;
  rig.inside.setExpanded(true);
  rig.controller->awakeFromNib();
  EXPECT_FALSE(rig.inside.expanded());
}

TEST(TheOutlets, AreWeakButForTheLyricsView) {
  WidgetRig rig;
  EXPECT_EQ(rig.controller->songTitle(), rig.songTitle);
  rig.songTitle = nullptr;
  EXPECT_EQ(rig.controller->songTitle(), nullptr);
  const std::weak_ptr<LyricsTextView> lyrics = std::exchange(rig.lyricsView, nullptr);
  EXPECT_NE(rig.controller->lyricsView(), nullptr);
  rig.controller->setLyricsView(nullptr);
  EXPECT_TRUE(lyrics.expired());
}

TEST(TheOutlets, AreConnectedByNameAndClass) {
  WidgetRig rig;
  auto& controller = *rig.controller;
  EXPECT_EQ(controller.connectOutlet("playButton", rig.songTitle), NSOutletConnection::WrongType);
  EXPECT_EQ(controller.connectOutlet("nonesuch", rig.songTitle), NSOutletConnection::UnknownName);
  EXPECT_EQ(controller.connectAction("nonesuch:", *rig.playButton),
            NSOutletConnection::UnknownName);
  EXPECT_EQ(controller.connectAction("updateSoundVolume:", *rig.playButton),
            NSOutletConnection::WrongType);
}

const std::set<std::string> kOutlets{
    "albumArtView", "songTitle",   "songArtistAndAlbum", "songRatingIndicator", "songRatingCell",
    "playButton",   "soundVolume", "progressBar",        "toggleLyricsButton",  "lyricsView"};

/// What every operation does to the player, the host and the outlets that are not absent.
std::vector<std::string> eventsOfEveryOperation(const std::set<std::string>& absent,
                                                const std::set<std::string>& ignored) {
  WidgetRig rig(absent);
  auto& controller = *rig.controller;
  NSLevelIndicator stars;
  NSSlider volume;
  rig.playerPlays("Song");
  rig.scripts.answerText(WidgetRig::kPosition, "63.5");
  controller.widgetPerformUpdateWithCompletionHandler(
      [&rig](NCUpdateResult result) { rig.log.add("report " + std::to_string(result)); });
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
  auto events = rig.log.take();
  std::erase_if(events, [&](const std::string& event) {
    return ignored.contains(event) || event.starts_with("size ");
  });
  return events;
}

TEST(AnAbsentOutlet, SkipsItsOwnStepsAlone) {
  std::vector<std::set<std::string>> rows{kOutlets};
  for (const auto& outlet : kOutlets) rows.push_back({outlet});
  for (const auto& absent : rows) {
    EXPECT_EQ(eventsOfEveryOperation(absent, {}), eventsOfEveryOperation({}, absent))
        << "without " << *absent.begin();
  }
}

TEST(TheActions, SendFromTheirControlsAndDoNotHoldTheController) {
  WidgetRig rig;
  rig.playerRuns("paused");
  const std::vector<std::pair<std::string, std::shared_ptr<NSControl>>> rows{
      {"previousButtonClicked:", rig.otherButton}, {"nextButtonClicked:", rig.otherButton},
      {"playButtonClicked:", rig.playButton},      {"seeMoreClicked:", rig.toggleLyricsButton},
      {"updateRating:", rig.songRatingIndicator},  {"updateSoundVolume:", rig.soundVolume}};
  for (const auto& [selector, control] : rows) {
    ASSERT_EQ(rig.controller->connectAction(selector, *control), NSOutletConnection::Connected);
    rig.onMain([&control = control] { EXPECT_TRUE(control->sendAction()); });
    rig.settle();
    EXPECT_FALSE(rig.scripts.scripts().empty()) << selector;
  }
  const std::weak_ptr<TodayViewController> weak = std::exchange(rig.controller, nullptr);
  EXPECT_TRUE(weak.expired());
  rig.playButton->sendAction();  // Nobody is there any more.
}

}  // namespace
}  // namespace Corvella
