#include <string>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AnAppearance : public testing::Test {
 protected:
  AnAppearance() { rig_.decoder.knowAnythingElseAs(512, 512); }

  void appear() {
    rig_.onMain([this] { rig_.controller->viewWillAppear(); });
  }
  void handOverCallback() {
    rig_.onMain([this] {
      rig_.controller->widgetPerformUpdateWithCompletionHandler(
          [this](NCUpdateResult result) { rig_.log.add("report " + std::to_string(result)); });
    });
  }

  WidgetRig rig_;
};

TEST_F(AnAppearance, WithAPlayerShowsPlaceholdersStartsARefreshAndReportsInOrder) {
  rig_.playerRuns("playing");
  handOverCallback();
  EXPECT_THAT(rig_.log.take(), ElementsAre("report 0"));
  appear();
  EXPECT_THAT(rig_.log.take(),
              ElementsAre("songTitle", "songArtistAndAlbum", "albumArtView", "songRatingCell",
                          "lyricsView", "lyricsView", "lyricsView", "script: running", "to global",
                          "script: get player state as string", "playButton", "report 0"));
  EXPECT_EQ(rig_.songTitle->stringValue(), "No Song Playing");
  EXPECT_EQ(rig_.songArtistAndAlbum->stringValue(), "N/A - N/A");
  EXPECT_EQ(rig_.albumArtView->image()->width(), 512);
  EXPECT_EQ(rig_.lyricsView->textColor(), NSColor::lightGrayColor());
  EXPECT_EQ(rig_.lyricsView->alignment(), 2U);
  EXPECT_EQ(rig_.lyricsView->font()->familyName(), "Helvetica Neue");
  EXPECT_EQ(rig_.lyricsView->font()->pointSize(), 15.0);
  EXPECT_EQ(rig_.playButton->title(), "\u275a\u275a");
}

TEST_F(AnAppearance, WithoutAPlayerAndTheFontShowsPlaceholdersAlone) {
  rig_.fonts = FixedFontFinder({});
  rig_.playButton->setTitle("as before");
  handOverCallback();
  rig_.log.take();
  appear();
  EXPECT_THAT(rig_.log.take(),
              ElementsAre("songTitle", "songArtistAndAlbum", "albumArtView", "songRatingCell",
                          "lyricsView", "lyricsView", "script: running", "report 1"));
  EXPECT_EQ(rig_.playButton->title(), "as before");
  EXPECT_EQ(rig_.lyricsView->font(), nullptr);
}

TEST_F(AnAppearance, WithAPlayerInAnyOtherStateShowsThePlaySign) {
  for (const auto* state : {"paused", "Playing", ""}) {
    rig_.playerRuns(state);
    if (*state == 0) rig_.scripts.fail(WidgetRig::kState);
    rig_.playButton->setTitle("");
    appear();
    EXPECT_EQ(rig_.playButton->title(), "\u25b6") << state;
  }
}

TEST_F(AnAppearance, ReportsToTheLatestCallbackOrToNobody) {
  handOverCallback();
  handOverCallback();
  EXPECT_THAT(rig_.log.take(), ElementsAre("report 0", "report 0"));
  rig_.onMain([this] { rig_.controller->widgetPerformUpdateWithCompletionHandler(nullptr); });
  EXPECT_THAT(rig_.log.take(), IsEmpty());
  EXPECT_FALSE(rig_.inside.hasCompletionHandler());
  appear();
  EXPECT_THAT(rig_.log.take(), testing::Not(testing::Contains("report 1")));
}

TEST_F(AnAppearance, MayHandOverAnotherCallbackFromWithinOne) {
  rig_.onMain([this] {
    rig_.controller->widgetPerformUpdateWithCompletionHandler([this](NCUpdateResult) {
      rig_.log.add("first");
      rig_.controller->widgetPerformUpdateWithCompletionHandler(
          [this](NCUpdateResult) { rig_.log.add("second"); });
    });
  });
  EXPECT_THAT(rig_.log.take(), ElementsAre("first", "second"));
}

TEST_F(AnAppearance, IsFollowedByADisappearanceThatStopsTheTimerALittleLater) {
  rig_.playerPlays("A");
  rig_.refresh();
  const auto timer = rig_.inside.timer();
  ASSERT_NE(timer, nullptr);
  rig_.onMain([this] {
    rig_.log.take();
    rig_.controller->viewWillDisappear();
    EXPECT_THAT(rig_.log.take(), ElementsAre("to main"));
    EXPECT_NE(rig_.inside.timer(), nullptr);
  });
  rig_.loop.runTurn();
  EXPECT_EQ(rig_.inside.timer(), nullptr);
  EXPECT_FALSE(timer->isValid());
  EXPECT_EQ(rig_.songTitle->stringValue(), "A");
}

TEST_F(AnAppearance, ThatEndsDuringARefreshShowsItsDataWithoutATimer) {
  rig_.playerPlays("A");
  appear();
  rig_.onMain([this] { rig_.controller->viewWillDisappear(); });
  rig_.loop.runTurn();
  ASSERT_EQ(rig_.globalQueue.size(), 1U);
  rig_.settle();
  EXPECT_EQ(rig_.songTitle->stringValue(), "A");
  EXPECT_EQ(rig_.inside.timer(), nullptr);
  appear();
  rig_.settle();
  EXPECT_NE(rig_.inside.timer(), nullptr);
}

}  // namespace
}  // namespace Corvella
