#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

constexpr auto kStateQuery = "script: get player state as string";
constexpr auto kPauseSign = "\u275a\u275a";
constexpr auto kPlaySign = "\u25b6";

struct TrackRow {
  bool next;
  std::string state;
  std::string title;
};

TEST(ChangingTheTrack, CommandsThenReadsTheStateThenStopsTheTimerThenRefreshes) {
  for (const auto& [next, state, title] :
       {TrackRow{true, "playing", kPauseSign}, TrackRow{true, "paused", kPlaySign},
        TrackRow{false, "playing", kPauseSign}, TrackRow{false, "PLAYING", kPlaySign}}) {
    SCOPED_TRACE(state + (next ? ", next" : ", previous"));
    WidgetRig rig;
    rig.playerPlays("Song");
    rig.refresh();
    const auto timer = rig.inside.timer();
    rig.scripts.answerText(WidgetRig::kState, state);
    rig.log.take();
    rig.onMain([&, next = next] {
      auto& controller = *rig.controller;
      next ? controller.nextButtonClicked(*rig.otherButton)
           : controller.previousButtonClicked(*rig.otherButton);
      EXPECT_THAT(rig.log.take(),
                  ElementsAre(next ? "script: next track" : "script: previous track", kStateQuery,
                              "playButton", "to main", "to global"));
      EXPECT_TRUE(timer->isValid());
    });
    EXPECT_EQ(rig.playButton->title(), title);
    rig.loop.runTurn();
    EXPECT_FALSE(timer->isValid());
    rig.settle();
    EXPECT_EQ(rig.inside.timer() != nullptr, state == "playing");
  }
}

TEST(ThePlayButton, ResumesOrPausesByTheStateAlone) {
  // Empty where the player does not tell its state.
  const std::vector<std::pair<std::string, bool>> rows{
      {"paused", true}, {"stopped", true}, {"playing", false}, {"Paused", false}, {"", false}};
  for (const auto& [state, resumes] : rows) {
    SCOPED_TRACE(state);
    WidgetRig rig;
    rig.playerPlays("Song");
    rig.refresh();
    const auto timer = rig.inside.timer();
    rig.scripts.answerText(WidgetRig::kState, state);
    if (state.empty()) rig.scripts.fail(WidgetRig::kState);
    rig.log.take();
    rig.onMain([&] { rig.controller->playButtonClicked(*rig.playButton); });
    using Events = std::vector<std::string>;
    EXPECT_EQ(rig.log.take(),
              resumes ? Events({kStateQuery, "script: play", "to global", "playButton"})
                      : Events({kStateQuery, "script: pause", "playButton", "to main"}));
    EXPECT_EQ(rig.playButton->title(), resumes ? kPauseSign : kPlaySign);
    rig.loop.runTurn();
    EXPECT_EQ(timer->isValid(), resumes);
    EXPECT_EQ(rig.inside.timer(), resumes ? timer : nullptr);
  }
}

TEST(ARating, IsSentInThePlayersPointsAndLeavesTheStoredOneAlone) {
  for (const auto& [stars, script] : {std::pair(3, "60"), std::pair(0, "0"), std::pair(9, "100")}) {
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
