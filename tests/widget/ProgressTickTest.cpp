#include <chrono>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

  const std::string position_ = std::string("script: ") + kPosition;
  const std::string song_ = std::string("script: ") + kSong;
  const std::string volume_ = std::string("script: ") + kVolume;
};

TEST_F(ATick, ComesEverySecondMovesTheBarAndAsksThreeScriptsInOrder) {
  const auto timer = inside.timer();
  tickAfter(std::chrono::milliseconds(999));
  EXPECT_THAT(take(), IsEmpty());
  tickAfter(std::chrono::milliseconds(1));
  EXPECT_THAT(take(), ElementsAre(position_, "progressBar", song_, volume_));
  EXPECT_EQ(controller->progressBar()->doubleValue(), 63.5);
  tick();
  EXPECT_THAT(take(), ElementsAre(position_, song_, volume_));
  EXPECT_EQ(inside.timer(), timer);
}

TEST_F(ATick, WithoutAPositionKeepsTheBarAndChecksTheTitleAllTheSame) {
  tick();
  scripts.fail(kPosition);
  take();
  tick();
  EXPECT_THAT(take(), testing::IsSupersetOf({song_, volume_}));
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
  EXPECT_TRUE(startsARefresh());
  EXPECT_TRUE(startsARefresh());
}

TEST_F(ATick, ThatFallsDueDuringAClickComesBeforeTheTimerIsStoppedAndIsTheLast) {
  playerRuns("paused");
  scripts.setObserver([this](const std::string& text) {
    log.push_back("script: " + text);
    if (text == "previous track") clock.advance(std::chrono::seconds(5));
  });
  call(&Widget::previousButtonClicked, *otherButton);
  EXPECT_THAT(take(), testing::Not(testing::Contains(position_)));
  loop.runTurn();
  EXPECT_THAT(take(), testing::Contains(position_).Times(1));
  EXPECT_EQ(inside.timer(), nullptr);
}

}  // namespace
}  // namespace Corvella
