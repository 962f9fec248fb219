#include <algorithm>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

class AnAppearance : public testing::Test, protected WidgetRig {
 protected:
  void handOver(Widget::CompletionHandler handler) {
    call(&Widget::widgetPerformUpdateWithCompletionHandler, std::move(handler));
  }
};

TEST_F(AnAppearance, WithAPlayerShowsPlaceholdersStartsARefreshAndReportsInOrder) {
  decoder.knowAnythingElseAs(512, 512);
  playerRuns("playing");
  handOver(report());
  EXPECT_THAT(take(), ElementsAre("report 0"));
  call(&Widget::viewWillAppear);
  EXPECT_THAT(take(),
              ElementsAre("songTitle", "songArtistAndAlbum", "albumArtView", "songRatingCell",
                          "lyricsView", "lyricsView", "lyricsView", "script: running", "to global",
                          "script: get player state as string", "playButton", "report 0"));
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
  fonts = FixedFontFinder({});
  decoder.knowAnythingElseAs(512, 512);
  handOver(report());
  take();
  call(&Widget::viewWillAppear);
  EXPECT_THAT(take(),
              ElementsAre("songTitle", "songArtistAndAlbum", "albumArtView", "songRatingCell",
                          "lyricsView", "lyricsView", "script: running", "report 1"));
}

TEST_F(AnAppearance, ReportsToTheLatestCallbackWhichMayComeFromWithinOne) {
  handOver([this](NCUpdateResult) {
    log.emplace_back("first");
    controller->widgetPerformUpdateWithCompletionHandler(report());
  });
  call(&Widget::viewWillAppear);
  EXPECT_EQ(log.front(), "first");
  EXPECT_EQ(std::count(log.begin(), log.end(), "first"), 1);
  EXPECT_EQ(log[1], "report 0");
  EXPECT_EQ(log.back(), "report 1");

  handOver(nullptr);
  EXPECT_FALSE(inside.hasCompletionHandler());
  take();
  call(&Widget::viewWillAppear);
  EXPECT_THAT(take(), testing::Not(testing::Contains("report 1")));
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

}  // namespace
}  // namespace Corvella
