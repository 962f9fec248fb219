#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

constexpr auto kStateQuery = "script: get player state as string";
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
  const auto trackEvents = [](const char* command) {
    return EventLog{command, kStateQuery, "playButton", "to main", "to global"};
  };
  const EventLog resumed{kStateQuery, "script: play", "to global", "playButton"};
  const EventLog paused{kStateQuery, "script: pause", "playButton", "to main"};
  const auto next = trackEvents("script: next track");
  const auto previous = trackEvents("script: previous track");
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
  for (const auto& [state, click, events, title, staysTimed] : rows) {
    SCOPED_TRACE(events[0] + events[1] + " while " + state);
    WidgetRig rig;
    rig.playerPlays("Song");
    rig.refresh();
    const auto timer = rig.inside.timer();
    rig.playerRuns(state);
    if (state.empty()) rig.scripts.fail(WidgetRig::kState);
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
    EXPECT_THAT(rig.take(), testing::ElementsAre(
                                "script: set rating of current track to " + std::to_string(points),
                                "songRatingCell"));
    EXPECT_EQ(rig.inside.songRating(), 0);
  }
}

}  // namespace
}  // namespace Corvella
