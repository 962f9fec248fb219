#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

class ARefresh : public testing::Test, protected WidgetRig {};

TEST_F(ARefresh, FetchesInTheBackgroundAndShowsInOrder) {
  playerPlays("Song A", "La la", 80);
  call(&Widget::updateSongInfo);
  EXPECT_THAT(take(), ElementsAre("to global"));
  globalQueue.runAll();
  EXPECT_THAT(
      take(),
      ElementsAre("script: get (name, artist, album, lyrics, rating, finish) of current track",
                  "script: get sound volume",
                  "script: tell artwork 1 of the current track to raw data", "to main"));
  loop.runTurn();
  EXPECT_THAT(take(),
              ElementsAre("toggleLyricsButton", "songTitle", "songArtistAndAlbum", "albumArtView",
                          "height 285", "songRatingCell", "songRatingIndicator", "soundVolume",
                          "progressBar", "script: get player state as string"));
  EXPECT_EQ(controller->songTitle()->stringValue(), "Song A");
  EXPECT_EQ(controller->songArtistAndAlbum()->stringValue(), "Artist X - Album Y");
  EXPECT_EQ(controller->albumArtView()->image()->width(), 7);
  EXPECT_EQ(controller->soundVolume()->integerValue(), 35);
  EXPECT_EQ(controller->progressBar()->doubleValue(), 0.0);
  EXPECT_EQ(controller->playButton()->title(), "");
}

TEST_F(ARefresh, OfAnUnfoldedPanelSetsTheTextBeforeItMeasuresAndKeepsTheWidthOfTheView) {
  inside.expanded() = true;
  const auto expectPanel = [this](const std::string& lyrics, const std::string& title,
                                  NSSize size) {
    playerPlays("Song", lyrics);
    refresh();
    EXPECT_EQ(controller->toggleLyricsButton()->title(), title);
    EXPECT_EQ(controller->lyricsView()->string(), lyrics);
    EXPECT_EQ(controller->preferredContentSize(), size);
  };
  expectPanel("one\ntwo\nthree", "Hide Lyrics", {320, 285 + 3 * 12});
  expectPanel("Instrumental", "No Lyrics", {320, 285 + 12});
  controller->lyricsView()->setLayoutManager(nullptr);
  controller->view()->setFrameSize({.width = 400, .height = 900});
  expectPanel("one", "Hide Lyrics", {400, 285});
}

TEST_F(ARefresh, JudgesTheLyricsByTheirWholeLowercasedText) {
  const auto titleFor = [this](const char* lyrics) {
    playerPlays("Song", lyrics);
    refresh();
    return controller->toggleLyricsButton()->title();
  };
  for (const char* lyrics : {"", "Instrumental", "(INSTRUMENTAL)", "[Instrumental]"}) {
    EXPECT_EQ(titleFor(lyrics), "No Lyrics") << lyrics;
  }
  for (const char* lyrics :
       {" instrumental", "instrumental\n", "Instrumental version", " ", "\u0130nstrumental"}) {
    EXPECT_EQ(titleFor(lyrics), "Show Lyrics") << lyrics;
  }
}

TEST_F(ARefresh, DividesTheRatingIntoWholeStars) {
  for (const auto& [rating, stars] : {std::pair(100, 5), {99, 4}, {59, 2}, {0, 0}, {-59, -2}}) {
    playerPlays("Song", "", rating);
    refresh();
    EXPECT_EQ(inside.songRating(), stars) << rating;
    EXPECT_EQ(controller->songRatingIndicator()->integerValue(), std::max(stars, 0)) << rating;
  }
}

TEST_F(ARefresh, MovesTheEndOfTheBarByTheFinishTextOrLeavesIt) {
  for (const auto& [finish, end] : {std::pair("215.5", 215.5), {nullptr, 215.5}, {"unknown", 0}}) {
    if (finish) playerPlays("Song", "", 0, finish);
    if (!finish) scripts.fail(kSong);
    refresh();
    EXPECT_EQ(controller->progressBar()->maxValue(), end);
  }
}

TEST_F(ARefresh, ReplacesTheTimerWhilePlayingAndLeavesItAloneInEveryOtherState) {
  playerPlays("Song");
  for (const auto* state : {"Playing", "paused", "stopped", ""}) {
    playerRuns(state);
    refresh();
    EXPECT_EQ(inside.timer(), nullptr) << state;
  }
  playerRuns("playing");
  refresh();
  const auto first = inside.timer();
  ASSERT_NE(first, nullptr);
  refresh();
  const auto second = inside.timer();
  EXPECT_FALSE(first->isValid());
  EXPECT_TRUE(second->isValid());
  scripts.fail(kState);
  refresh();
  EXPECT_EQ(inside.timer(), second);
  EXPECT_TRUE(second->isValid());
}

TEST_F(ARefresh, WhoseBackgroundStepEndsLastIsTheOneOnScreen) {
  playerPlays("First");
  call(&Widget::updateSongInfo);
  call(&Widget::updateSongInfo);
  globalQueue.run(1);
  playerPlays("Second");
  globalQueue.run(0);
  loop.runTurn();
  EXPECT_EQ(controller->songTitle()->stringValue(), "Second");
}

class AControllerThatItsOwnerReleases : public testing::Test, protected WidgetRig {
 protected:
  std::weak_ptr<Widget> release() { return std::exchange(controller, nullptr); }
};

TEST_F(AControllerThatItsOwnerReleases, LivesUntilItsBlocksHaveRunAndEndsOnTheMainQueue) {
  for (const bool refreshes : {true, false}) {
    controller = std::make_shared<Widget>(services);
    controller->view();
    if (refreshes) call(&Widget::updateSongInfo);
    if (!refreshes) call(&Widget::seeMoreClicked, *otherButton);
    const auto weak = release();
    globalQueue.run(0, [&] {
      EXPECT_FALSE(weak.expired());
      loop.runTurn();
      EXPECT_TRUE(weak.expired());
    });
  }
}

TEST_F(AControllerThatItsOwnerReleases, LivesUntilItsTimerHasBeenStopped) {
  playerPlays("Song");
  refresh();
  const auto bar = controller->progressBar();
  const auto weak = release();
  tickAfter(std::chrono::seconds(1));
  EXPECT_EQ(bar->doubleValue(), 63.5);
  take();
  onMain([&] { weak.lock()->viewWillDisappear(); });
  EXPECT_THAT(take(), ElementsAre("to main"));
  EXPECT_FALSE(weak.expired());
  loop.runTurn();
  EXPECT_TRUE(weak.expired());
}

}  // namespace
}  // namespace Corvella
