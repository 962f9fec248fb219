#include <algorithm>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

TEST(ARefresh, FetchesInTheBackgroundAndShowsInOrder) {
  WidgetRig rig;
  rig.playerPlays("Song A", "La la", 80);
  rig.onMain([&] { rig.controller->updateSongInfo(); });
  EXPECT_THAT(rig.log.take(), ElementsAre("to global"));

  rig.globalQueue.runAll();
  EXPECT_THAT(
      rig.log.take(),
      ElementsAre("script: get (name, artist, album, lyrics, rating, finish) of current track",
                  "script: get sound volume",
                  "script: tell artwork 1 of the current track to raw data", "to main"));
  rig.loop.runTurn();
  EXPECT_THAT(rig.log.take(),
              ElementsAre("toggleLyricsButton", "songTitle", "songArtistAndAlbum", "albumArtView",
                          "size 320 x 285", "songRatingCell", "songRatingIndicator", "soundVolume",
                          "progressBar", "script: get player state as string"));

  EXPECT_EQ(rig.toggleLyricsButton->title(), "Show Lyrics");
  EXPECT_EQ(rig.songTitle->stringValue(), "Song A");
  EXPECT_EQ(rig.songArtistAndAlbum->stringValue(), "Artist X - Album Y");
  EXPECT_EQ(rig.albumArtView->image()->width(), 7);
  EXPECT_EQ(rig.inside.songRating(), 4);
  EXPECT_EQ(rig.songRatingIndicator->integerValue(), 4);
  EXPECT_EQ(rig.soundVolume->integerValue(), 35);
  EXPECT_EQ(rig.progressBar->maxValue(), 200.0);
  EXPECT_EQ(rig.progressBar->doubleValue(), 0.0);
  EXPECT_EQ(rig.playButton->title(), "");
}

TEST(ARefresh, OfAnUnfoldedPanelSetsTheTextBeforeItMeasuresAndKeepsTheWidthOfTheView) {
  WidgetRig rig;
  rig.playerPlays("Song A", "one\ntwo\nthree");
  rig.inside.setExpanded(true);
  rig.refresh();
  EXPECT_EQ(rig.toggleLyricsButton->title(), "Hide Lyrics");
  EXPECT_EQ(rig.lyricsView->string(), "one\ntwo\nthree");
  EXPECT_EQ(rig.controller->preferredContentSize(), (NSSize{320, 285 + 3 * 12}));

  rig.playerPlays("Song B", "Instrumental");
  rig.refresh();
  EXPECT_EQ(rig.toggleLyricsButton->title(), "No Lyrics");
  EXPECT_EQ(rig.lyricsView->string(), "Instrumental");
  EXPECT_EQ(rig.controller->preferredContentSize(), (NSSize{320, 285 + 12}));

  rig.lyricsView->setLayoutManager(nullptr);
  rig.controller->view()->setFrameSize({.width = 400, .height = 900});
  rig.refresh();
  EXPECT_EQ(rig.controller->preferredContentSize(), (NSSize{400, 285}));
}

TEST(TheLyrics, AreJudgedByTheirWholeLowercasedText) {
  const std::vector<std::pair<const char*, bool>> rows{{"", true},
                                                       {"Instrumental", true},
                                                       {"(INSTRUMENTAL)", true},
                                                       {"[Instrumental]", true},
                                                       {" instrumental", false},
                                                       {"instrumental\n", false},
                                                       {"Instrumental version", false},
                                                       {" ", false},
                                                       {"\u0130nstrumental", false}};
  WidgetRig rig;
  for (const auto& [lyrics, missing] : rows) {
    rig.playerPlays("Song", lyrics);
    rig.refresh();
    EXPECT_EQ(rig.toggleLyricsButton->title(), missing ? "No Lyrics" : "Show Lyrics") << lyrics;
  }
}

TEST(TheRating, IsDividedIntoWholeStars) {
  WidgetRig rig;
  for (const auto& [rating, stars] : {std::pair(100, 5), {99, 4}, {59, 2}, {0, 0}, {-59, -2}}) {
    rig.playerPlays("Song", "", rating);
    rig.refresh();
    EXPECT_EQ(rig.inside.songRating(), stars) << rating;
    EXPECT_EQ(rig.songRatingIndicator->integerValue(), std::max(stars, 0)) << rating;
  }
}

TEST(TheProgressMaximum, FollowsTheFinishTextOrStays) {
  WidgetRig rig;
  rig.playerPlays("Song", "", 0, "215.5");
  rig.refresh();
  EXPECT_EQ(rig.progressBar->maxValue(), 215.5);
  rig.scripts.fail(WidgetRig::kSong);
  rig.refresh();
  EXPECT_EQ(rig.progressBar->maxValue(), 215.5);
  rig.playerPlays("Song", "", 0, "unknown");
  rig.refresh();
  EXPECT_EQ(rig.progressBar->maxValue(), 0.0);
}

TEST(TheTimer, IsStartedOnceWhilePlayingAndReplacedByTheNextRefresh) {
  WidgetRig rig;
  rig.playerPlays("Song");
  rig.refresh();
  const auto first = rig.inside.timer();
  ASSERT_NE(first, nullptr);
  rig.refresh();
  EXPECT_NE(rig.inside.timer(), first);
  EXPECT_FALSE(first->isValid());
  EXPECT_TRUE(rig.inside.timer()->isValid());
  rig.log.take();
  rig.tickAfter(std::chrono::seconds(1));
  EXPECT_THAT(rig.log.take(), testing::Contains("script: player position").Times(1));
}

TEST(TheTimer, IsLeftAloneInEveryOtherState) {
  WidgetRig rig;
  rig.playerPlays("Song");
  for (const auto* state : {"Playing", "paused", "stopped", ""}) {
    rig.scripts.answerText(WidgetRig::kState, state);
    rig.refresh();
    EXPECT_EQ(rig.inside.timer(), nullptr) << state;
  }
  rig.scripts.answerText(WidgetRig::kState, "playing");
  rig.refresh();
  const auto timer = rig.inside.timer();
  rig.scripts.fail(WidgetRig::kState);
  rig.refresh();
  EXPECT_EQ(rig.inside.timer(), timer);
  EXPECT_TRUE(timer->isValid());
}

TEST(TwoRefreshes, WhoseBackgroundStepsEndInReverseLeaveTheLastOneOnScreen) {
  WidgetRig rig;
  rig.playerPlays("First");
  rig.onMain([&] { rig.controller->updateSongInfo(); });
  rig.onMain([&] { rig.controller->updateSongInfo(); });
  rig.globalQueue.run(1);
  rig.playerPlays("Second");
  rig.globalQueue.run(0);
  rig.loop.runTurn();
  EXPECT_EQ(rig.songTitle->stringValue(), "Second");
}

TEST(AControllerThatItsOwnerReleases, LivesUntilItsBlocksHaveRunAndEndsOnTheMainQueue) {
  for (const bool refreshes : {true, false}) {
    WidgetRig rig;
    rig.playerRuns("paused");
    rig.onMain([&] {
      auto& controller = *rig.controller;
      refreshes ? controller.updateSongInfo() : controller.seeMoreClicked(*rig.otherButton);
    });
    const std::weak_ptr<TodayViewController> weak = std::exchange(rig.controller, nullptr);
    ASSERT_FALSE(weak.expired());
    rig.globalQueue.run(0, [&] {
      EXPECT_FALSE(weak.expired());
      rig.loop.runTurn();
      EXPECT_TRUE(weak.expired());
    });
  }
}

TEST(AControllerThatItsOwnerReleases, LivesUntilItsTimerHasBeenStopped) {
  WidgetRig rig;
  rig.playerPlays("Song");
  rig.refresh();
  const std::weak_ptr<TodayViewController> weak = std::exchange(rig.controller, nullptr);
  ASSERT_FALSE(weak.expired());
  rig.scripts.answerText(WidgetRig::kPosition, "63.5");
  rig.tickAfter(std::chrono::seconds(1));
  EXPECT_EQ(rig.progressBar->doubleValue(), 63.5);
  rig.onMain([&] { weak.lock()->viewWillDisappear(); });
  ASSERT_FALSE(weak.expired());
  rig.loop.runTurn();
  EXPECT_TRUE(weak.expired());
}

}  // namespace
}  // namespace Corvella
