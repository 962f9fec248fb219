#include <optional>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/RowName.h"
#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

constexpr auto kPauseSign = "\u275a\u275a";
constexpr auto kPlaySign = "\u25b6";

struct TransportRow {
  std::string name;
  PlaybackRequest request;
  std::string state;
  std::string title;
};

class ChangingTheTrack : public testing::TestWithParam<TransportRow> {};

TEST_P(ChangingTheTrack, CommandsThenReadsTheStateThenStopsTheTimerThenRefreshes) {
  WidgetRig rig;
  rig.playerPlays("Song");
  rig.refresh();
  const auto timer = rig.inside.timer();
  rig.scripts.answerText(WidgetRig::kState, GetParam().state);
  const bool next = GetParam().request == PlaybackRequest::Next;
  rig.log.take();
  rig.onMain([&] {
    auto& controller = *rig.controller;
    next ? controller.nextButtonClicked(*rig.otherButton)
         : controller.previousButtonClicked(*rig.otherButton);
    EXPECT_THAT(rig.log.take(), ElementsAre(next ? "script: next track" : "script: previous track",
                                            "script: get player state as string", "playButton",
                                            "to main", "to global"));
    EXPECT_TRUE(timer->isValid());
  });
  EXPECT_EQ(rig.playButton->title(), GetParam().title);
  rig.loop.runTurn();
  EXPECT_FALSE(timer->isValid());
  rig.settle();
  EXPECT_EQ(rig.inside.timer() != nullptr, GetParam().state == "playing");
}

INSTANTIATE_TEST_SUITE_P(
    InEachState, ChangingTheTrack,
    testing::Values(
        TransportRow{"NextPlaying", PlaybackRequest::Next, "playing", kPauseSign},
        TransportRow{"NextPaused", PlaybackRequest::Next, "paused", kPlaySign},
        TransportRow{"PreviousPlaying", PlaybackRequest::Previous, "playing", kPauseSign},
        TransportRow{"PreviousUnknown", PlaybackRequest::Previous, "PLAYING", kPlaySign}),
    rowName);

struct PlayRow {
  std::string name;
  std::optional<std::string> state;
  bool resumes;
};

class ThePlayButton : public testing::TestWithParam<PlayRow> {};

TEST_P(ThePlayButton, ResumesOrPausesByTheStateAlone) {
  WidgetRig rig;
  rig.playerPlays("Song");
  rig.refresh();
  const auto timer = rig.inside.timer();
  if (GetParam().state) {
    rig.scripts.answerText(WidgetRig::kState, *GetParam().state);
  } else {
    rig.scripts.fail(WidgetRig::kState);
  }
  rig.log.take();
  rig.onMain([&] { rig.controller->playButtonClicked(*rig.playButton); });
  if (GetParam().resumes) {
    EXPECT_THAT(rig.log.take(), ElementsAre("script: get player state as string", "script: play",
                                            "to global", "playButton"));
    EXPECT_EQ(rig.playButton->title(), kPauseSign);
    rig.loop.runTurn();
    EXPECT_TRUE(timer->isValid());
  } else {
    EXPECT_THAT(rig.log.take(), ElementsAre("script: get player state as string", "script: pause",
                                            "playButton", "to main"));
    EXPECT_EQ(rig.playButton->title(), kPlaySign);
    rig.loop.runTurn();
    EXPECT_FALSE(timer->isValid());
    EXPECT_EQ(rig.inside.timer(), nullptr);
  }
}

INSTANTIATE_TEST_SUITE_P(InEachState, ThePlayButton,
                         testing::Values(PlayRow{"Paused", "paused", true},
                                         PlayRow{"Stopped", "stopped", true},
                                         PlayRow{"Playing", "playing", false},
                                         PlayRow{"OtherCase", "Paused", false},
                                         PlayRow{"Other", "fast forwarding", false},
                                         PlayRow{"Absent", std::nullopt, false}),
                         rowName);

TEST(ARating, IsSentInThePlayersPointsAndLeavesTheStoredOneAlone) {
  for (const auto& [stars, script] :
       {std::pair(3, "60"), std::pair(0, "0"), std::pair(5, "100"), std::pair(9, "100")}) {
    WidgetRig rig;
    rig.songRatingIndicator->setIntegerValue(stars);
    rig.log.take();
    rig.onMain([&] { rig.controller->updateRating(*rig.songRatingIndicator); });
    EXPECT_THAT(rig.log.take(),
                ElementsAre(std::string("script: set rating of current track to ") + script,
                            "songRatingCell"));
    EXPECT_EQ(rig.inside.songRating(), 0);
  }
}

TEST(AVolume, IsSentAsItStands) {
  WidgetRig rig;
  rig.soundVolume->setDoubleValue(37.9);
  rig.log.take();
  rig.onMain([&] { rig.controller->updateSoundVolume(*rig.soundVolume); });
  EXPECT_THAT(rig.log.take(), ElementsAre("script: set sound volume to 37"));
}

}  // namespace
}  // namespace Corvella
