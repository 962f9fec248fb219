#include <algorithm>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class AnAppearance : public testing::Test, protected WidgetRig {
 protected:
  AnAppearance() { decoder.knowAnythingElseAs(512, 512); }

  void handOver(Widget::CompletionHandler handler) {
    call(&Widget::widgetPerformUpdateWithCompletionHandler, std::move(handler));
  }
};

TEST_F(AnAppearance, WithAPlayerShowsPlaceholdersStartsARefreshAndReportsInOrder) {
  playerRuns("playing");
  handOver(report());
  EXPECT_THAT(take(), ElementsAre("report 0"));
  call(&Widget::viewWillAppear);
  EXPECT_THAT(take(), ElementsAre("songTitle", "songArtistAndAlbum", "albumArtView",
                                  "songRatingCell", "lyricsView", "lyricsView", "lyricsView",
                                  "running", "to global", kState, "playButton", "report 0"));
  EXPECT_EQ(controller->songTitle()->stringValue(), "No Song Playing");
  EXPECT_EQ(controller->songArtistAndAlbum()->stringValue(), "N/A - N/A");
  EXPECT_EQ(controller->albumArtView()->image()->width(), 512);
  EXPECT_EQ(controller->lyricsView()->textColor(), NSColor::lightGrayColor());
  EXPECT_EQ(controller->lyricsView()->alignment(), NSTextAlignmentCenter);
  EXPECT_EQ(controller->lyricsView()->font()->familyName(), "Helvetica Neue");
  EXPECT_EQ(controller->lyricsView()->font()->pointSize(), 15.0);
  EXPECT_EQ(controller->playButton()->title(), "\u275a\u275a");
}

TEST_F(AnAppearance, WithoutAPlayerAndTheFontShowsPlaceholdersAlone) {
  fonts.family = "Another";
  handOver(report());
  take();
  call(&Widget::viewWillAppear);
  EXPECT_THAT(take(),
              ElementsAre("songTitle", "songArtistAndAlbum", "albumArtView", "songRatingCell",
                          "lyricsView", "lyricsView", "running", "report 1"));
}

TEST_F(AnAppearance, ReportsToTheLatestCallbackWhichMayComeFromWithinOne) {
  handOver([this](NCUpdateResult) {
    log.emplace_back("first");
    controller->widgetPerformUpdateWithCompletionHandler(report());
  });
  EXPECT_THAT(take(), ElementsAre("first", "report 0"));
  call(&Widget::viewWillAppear);
  EXPECT_EQ(log.back(), "report 1");
  EXPECT_THAT(take(), Not(Contains("first")));

  handOver(nullptr);
  EXPECT_FALSE(inside.hasCompletionHandler());
  call(&Widget::viewWillAppear);
  EXPECT_THAT(take(), Not(Contains("report 1")));
}

TEST(ADisappearance, LeavesOnlyTheRefreshesThatStartAfterItTheirTimer) {
  for (const bool startsAfter : {false, true}) {
    WidgetRig rig;
    rig.playerPlays("A");
    if (!startsAfter) rig.call(&TodayViewController::updateSongInfo);
    rig.call(&TodayViewController::viewWillDisappear);
    if (startsAfter) rig.call(&TodayViewController::updateSongInfo);
    rig.settle();
    EXPECT_EQ(rig.controller->songTitle()->stringValue(), "A");
    EXPECT_EQ(rig.inside.timer() != nullptr, startsAfter);
  }
}

class ARefresh : public testing::Test, protected WidgetRig {
 protected:
  void showLyrics(const std::string& lyrics) {
    playerPlays("Song", lyrics);
    refresh();
  }
};

TEST_F(ARefresh, FetchesInTheBackgroundAndShowsInOrder) {
  playerPlays("Song A", "La la", 80);
  call(&Widget::updateSongInfo);
  EXPECT_THAT(take(), ElementsAre("to global"));
  globalQueue.runAll();
  EXPECT_THAT(take(), ElementsAre(kSong, kVolume, kArtwork, "to main"));
  loop.runTurn();
  EXPECT_THAT(take(), ElementsAre("toggleLyricsButton", "songTitle", "songArtistAndAlbum",
                                  "albumArtView", "height 285", "songRatingCell",
                                  "songRatingIndicator", "soundVolume", "progressBar", kState));
  EXPECT_EQ(controller->songTitle()->stringValue(), "Song A");
  EXPECT_EQ(controller->songArtistAndAlbum()->stringValue(), "Artist X - Album Y");
  EXPECT_EQ(controller->albumArtView()->image()->width(), 7);
  EXPECT_EQ(controller->soundVolume()->integerValue(), 35);
  EXPECT_EQ(controller->progressBar()->doubleValue(), 0.0);
  EXPECT_EQ(controller->playButton()->title(), "");
}

TEST_F(ARefresh, OfAnUnfoldedPanelSetsTheTextBeforeItMeasuresAndKeepsTheWidthOfTheView) {
  inside.expanded() = true;
  showLyrics("one\ntwo\nthree");
  expectPanel("Hide Lyrics", "one\ntwo\nthree", 285 + 3 * FixedTextMeasurer::lineHeight);
  showLyrics("Instrumental");
  expectPanel("No Lyrics", "Instrumental", 285 + FixedTextMeasurer::lineHeight);
  controller->lyricsView()->setLayoutManager(nullptr);
  controller->view()->setFrameSize({.width = 400, .height = 900});
  showLyrics("one");
  expectPanel("Hide Lyrics", "one", 285, 400);
}

TEST_F(ARefresh, JudgesTheLyricsByTheirWholeLowercasedText) {
  const auto expectTitle = [this](const char* title, const std::vector<const char*>& rows) {
    for (const char* const lyrics : rows) {
      showLyrics(lyrics);
      EXPECT_EQ(controller->toggleLyricsButton()->title(), title) << lyrics;
    }
  };
  expectTitle("No Lyrics", {"", "Instrumental", "(INSTRUMENTAL)", "[Instrumental]"});
  expectTitle("Show Lyrics", {" instrumental", "instrumental\n", "Instrumental version", " ",
                              "\u0130nstrumental"});
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

/// A widget that shows "Song A", which plays.
class ATick : public testing::Test, protected WidgetRig {
 protected:
  ATick() {
    playerPlays("Song A");
    refresh();
    take();
  }

  void tick() { tickAfter(std::chrono::seconds(1)); }
  bool startsARefresh() {
    tick();
    const bool started = globalQueue.size() == 1;
    settle();
    return started;
  }
};

TEST_F(ATick, ComesEverySecondMovesTheBarAndAsksThreeScriptsInOrder) {
  const auto timer = inside.timer();
  tickAfter(std::chrono::milliseconds(999));
  EXPECT_THAT(take(), ElementsAre());
  tickAfter(std::chrono::milliseconds(1));
  EXPECT_THAT(take(), ElementsAre(kPosition, "progressBar", kSong, kVolume));
  EXPECT_EQ(controller->progressBar()->doubleValue(), 63.5);
  tick();
  EXPECT_THAT(take(), ElementsAre(kPosition, kSong, kVolume));
  EXPECT_EQ(inside.timer(), timer);
}

TEST_F(ATick, WithoutAPositionKeepsTheBarAndChecksTheTitleAllTheSame) {
  tick();
  scripts.fail(kPosition);
  take();
  tick();
  EXPECT_THAT(take(), testing::IsSupersetOf({kSong, kVolume}));
  EXPECT_EQ(controller->progressBar()->doubleValue(), 63.5);
  scripts.answerText(kPosition, "soon");
  tick();
  EXPECT_EQ(controller->progressBar()->doubleValue(), 0.0);
}

TEST_F(ATick, SeesANewTrackByItsTitleAloneUpToNormalization) {
  for (const char* title : {"Song B", "song b\u0301", "Caf\u00e9"}) {
    playerPlays(title);
    EXPECT_TRUE(startsARefresh());
    EXPECT_EQ(controller->songTitle()->stringValue(), title);
  }
  playerPlays("Cafe\u0301", "other lyrics", 100, "99.0");
  EXPECT_FALSE(startsARefresh());
}

TEST_F(ATick, AfterThePlayerWasLostShowsNoSongOnceAndGoesOn) {
  scripts.fail(kSong);
  scripts.answerText(kState, "stopped");
  EXPECT_TRUE(startsARefresh());
  EXPECT_EQ(controller->songTitle()->stringValue(), "No Song Playing");
  EXPECT_FALSE(startsARefresh());
  EXPECT_TRUE(inside.timer()->isValid());
}

TEST_F(ATick, WithoutATitleOutletRefreshesEachTime) {
  outlets.clear();
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(startsARefresh());
}

TEST_F(ATick, ThatFallsDueDuringAClickComesBeforeTheTimerIsStoppedAndIsTheLast) {
  playerRuns("paused");
  scripts.observer = [this](const std::string& command) {
    log.push_back(command);
    if (command == "previous track") clock.advance(std::chrono::seconds(5));
  };
  call(&Widget::previousButtonClicked, *otherButton);
  EXPECT_THAT(take(), Not(Contains(kPosition)));
  loop.runTurn();
  EXPECT_THAT(take(), Contains(kPosition).Times(1));
  EXPECT_EQ(inside.timer(), nullptr);
}

class AControllerThatItsOwnerReleases : public testing::Test, protected WidgetRig {};

TEST_F(AControllerThatItsOwnerReleases, LivesUntilItsBlocksHaveRunAndEndsOnTheMainQueue) {
  for (const bool refreshes : {true, false}) {
    controller = std::make_shared<Widget>(services);
    controller->view();
    if (refreshes) call(&Widget::updateSongInfo);
    if (!refreshes) call(&Widget::seeMoreClicked, *otherButton);
    const std::weak_ptr<Widget> weak = std::exchange(controller, nullptr);
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
  const std::weak_ptr<Widget> weak = std::exchange(controller, nullptr);
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
