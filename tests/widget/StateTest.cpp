#include <memory>
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
  EXPECT_EQ(inside.ratingScale(), 20);
  EXPECT_EQ(inside.initialHeight(), 285.0);
  EXPECT_EQ(inside.pauseLabel(), "\u275a\u275a");
  EXPECT_EQ(inside.playLabel(), "\u25b6");
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
  EXPECT_EQ(TodayViewController(rig.services, std::nullopt, nullptr).nibName(),
            "TodayViewController");
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
  EXPECT_EQ(controller.actionNamed("nonesuch:"), nullptr);
}

TEST(TheActions, SendFromTheirControlsAndDoNotHoldTheController) {
  WidgetRig rig;
  rig.playerRuns("paused");
  const std::vector<std::pair<std::string, std::shared_ptr<NSControl>>> rows{
      {"previousButtonClicked:", rig.otherButton}, {"nextButtonClicked:", rig.otherButton},
      {"playButtonClicked:", rig.playButton},      {"seeMoreClicked:", rig.toggleLyricsButton},
      {"updateRating:", rig.songRatingIndicator},  {"updateSoundVolume:", rig.soundVolume}};
  for (const auto& [selector, control] : rows) {
    control->setAction(rig.controller->actionNamed(selector));
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
