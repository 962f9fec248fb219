#include <limits>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

constexpr auto kPauseSign = "\u275a\u275a";
constexpr auto kPlaySign = "\u25b6";

struct ClickRow {
  std::string state;  ///< Empty where the player does not tell it.
  void (TodayViewController::*click)(NSButton&);
  EventLog events;
  std::string title;
  bool staysTimed;  ///< Whether the timer goes on when the click is over.
};

TEST(AClick, CommandsThePlayerAndShowsItsStateInOrderAndStopsTheTimerLater) {
  using Widget = TodayViewController;
  const auto state = WidgetRig::kState;
  const EventLog next{"next track", state, "playButton", "to main", "to global"};
  const EventLog previous{"previous track", state, "playButton", "to main", "to global"};
  const EventLog resumed{state, "play", "to global", "playButton"};
  const EventLog paused{state, "pause", "playButton", "to main"};
  const std::vector<ClickRow> rows{
      {"playing", &Widget::nextButtonClicked, next, kPauseSign, false},
      {"paused", &Widget::nextButtonClicked, next, kPlaySign, false},
      {"playing", &Widget::previousButtonClicked, previous, kPauseSign, false},
      {"PLAYING", &Widget::previousButtonClicked, previous, kPlaySign, false},
      {"", &Widget::previousButtonClicked, previous, kPlaySign, false},
      {"paused", &Widget::playButtonClicked, resumed, kPauseSign, true},
      {"stopped", &Widget::playButtonClicked, resumed, kPauseSign, true},
      {"playing", &Widget::playButtonClicked, paused, kPlaySign, false},
      {"Paused", &Widget::playButtonClicked, paused, kPlaySign, false},
      {"", &Widget::playButtonClicked, paused, kPlaySign, false}};
  for (const auto& [playerState, click, events, title, staysTimed] : rows) {
    SCOPED_TRACE(events[0] + events[1] + " while " + playerState);
    WidgetRig rig;
    rig.playerPlays("Song");
    rig.refresh();
    const auto timer = rig.inside.timer();
    rig.playerRuns(playerState);
    if (playerState.empty()) rig.scripts.fail(WidgetRig::kState);
    rig.take();
    rig.call(click, *rig.otherButton);
    EXPECT_EQ(rig.take(), events);
    EXPECT_EQ(rig.controller->playButton()->title(), title);
    EXPECT_TRUE(timer->isValid());
    rig.loop.runTurn();
    EXPECT_EQ(timer->isValid(), staysTimed);
    EXPECT_EQ(rig.inside.timer(), staysTimed ? timer : nullptr);
  }
}

TEST(ARating, OfAbsurdlyManyStarsStaysWithinTheRangeOfNumbersAndLeavesTheStoredOneAlone) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max() / 20 * 20;
  for (const auto& [stars, points] :
       {std::pair(3.0, std::int64_t{60}), {1e19, most}, {-1e19, -most}}) {
    WidgetRig rig;
    NSLevelIndicator sender;
    sender.setMinValue(-1e300);
    sender.setMaxValue(1e300);
    sender.setDoubleValue(stars);
    rig.call(&TodayViewController::updateRating, sender);
    const auto script = "set rating of current track to " + std::to_string(points);
    EXPECT_THAT(rig.take(), ElementsAre(script, "songRatingCell"));
    EXPECT_EQ(rig.inside.songRating(), 0);
  }
}

/// A folded panel whose track has ten lines of lyrics, 120 points high.
class AFoldedPanel : public testing::Test, protected WidgetRig {
 protected:
  AFoldedPanel() {
    playerPlays("Song", kTenLines);
    refresh();
    take();
  }

  void click() { call(&Widget::seeMoreClicked, *controller->toggleLyricsButton()); }

  static constexpr auto kTenLines = "1\n2\n3\n4\n5\n6\n7\n8\n9\n10";
};

TEST_F(AFoldedPanel, UnfoldsWhenTheLyricsHaveArrivedAndFoldsAtOnce) {
  click();
  EXPECT_THAT(take(), ElementsAre("to global"));
  EXPECT_TRUE(inside.expanded());
  globalQueue.runAll();
  EXPECT_THAT(take(), ElementsAre(kLyrics, "to main"));
  expectPanel("Show Lyrics", "", 285);
  loop.runTurn();
  EXPECT_THAT(take(), ElementsAre("lyricsView", "toggleLyricsButton", "height 405"));
  expectPanel("Hide Lyrics", kTenLines, 405);

  click();
  EXPECT_THAT(take(), ElementsAre("lyricsView", "height 285", "toggleLyricsButton"));
  expectPanel("Show Lyrics", "", 285);
  EXPECT_FALSE(inside.expanded());
}

TEST_F(AFoldedPanel, IsLeftAloneWhileThereAreNoLyrics) {
  for (const auto& [title, unfolds] : {std::pair("No Lyrics", false), {"no lyrics", true}}) {
    controller->toggleLyricsButton()->setTitle(title);
    click();
    EXPECT_EQ(inside.expanded(), unfolds);
    EXPECT_EQ(globalQueue.size(), unfolds ? 1U : 0U);
  }
}

TEST_F(AFoldedPanel, ClickedTwiceBeforeTheLyricsArriveShowsThemWhileFolded) {
  click();
  click();
  expectPanel("Show Lyrics", "", 285);
  settle();
  EXPECT_FALSE(inside.expanded());
  expectPanel("Hide Lyrics", kTenLines, 405);
  click();
  EXPECT_TRUE(inside.expanded());
  EXPECT_EQ(globalQueue.size(), 1U);
}

TEST_F(AFoldedPanel, UnfoldsWithoutTextWhenTheQueryFailsAndToTheInitialHeightWithoutAView) {
  scripts.fail(kLyrics);
  click();
  settle();
  expectPanel("Hide Lyrics", "", 285.0 + FixedTextMeasurer::lineHeight);
  click();
  controller->setLyricsView(nullptr);
  click();
  settle();
  EXPECT_EQ(controller->toggleLyricsButton()->title(), "Hide Lyrics");
  EXPECT_EQ(controller->preferredContentSize().height, 285.0);
}

TEST_F(AFoldedPanel, ReadsAndWritesTheButtonThatWasClickedAndHoldsItMeanwhile) {
  controller->toggleLyricsButton()->setTitle("No Lyrics");
  take();
  call(&Widget::seeMoreClicked, *otherButton);
  const std::weak_ptr<NSButton> other = std::exchange(otherButton, nullptr);
  globalQueue.run(0, [&] {
    EXPECT_FALSE(other.expired());
    loop.runTurn();
    EXPECT_TRUE(other.expired());
  });
  EXPECT_THAT(take(), testing::Contains("otherButton"));
  expectPanel("No Lyrics", kTenLines, 405);
}

TEST_F(AFoldedPanel, UnfoldsForAButtonThatNobodyShares) {
  NSButton button;
  call(&Widget::seeMoreClicked, button);
  settle();
  expectPanel("Show Lyrics", kTenLines, 405);
  EXPECT_EQ(button.title(), "");
}

}  // namespace
}  // namespace Corvella
