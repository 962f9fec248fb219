#include <chrono>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAreArray;

const std::vector<std::string> kTickScripts{"script: player position",
                                            std::string("script: ") + WidgetRig::kSong,
                                            "script: get sound volume"};

/// A widget that shows "Song A", which plays.
class ATick : public testing::Test {
 protected:
  ATick() {
    rig_.playerPlays("Song A");
    rig_.scripts.answerText(WidgetRig::kPosition, "63.5");
    rig_.refresh();
    rig_.log.take();
  }

  void tick() { rig_.tickAfter(std::chrono::seconds(1)); }
  bool startsARefresh() {
    tick();
    const bool started = rig_.globalQueue.size() == 1;
    rig_.settle();
    return started;
  }

  WidgetRig rig_;
};

TEST_F(ATick, ComesEverySecondMovesTheBarAndAsksThreeScriptsInOrder) {
  const auto timer = rig_.inside.timer();
  rig_.tickAfter(std::chrono::milliseconds(999));
  EXPECT_THAT(rig_.log.take(), testing::IsEmpty());
  rig_.tickAfter(std::chrono::milliseconds(1));
  auto expected = kTickScripts;
  expected.insert(expected.begin() + 1, "progressBar");
  EXPECT_EQ(rig_.log.take(), expected);
  EXPECT_EQ(rig_.progressBar->doubleValue(), 63.5);
  tick();
  EXPECT_EQ(rig_.log.take(), kTickScripts);
  EXPECT_EQ(rig_.inside.timer(), timer);
}

TEST_F(ATick, WithoutAPositionKeepsTheBarAndChecksTheTitleAllTheSame) {
  tick();
  rig_.scripts.answer(WidgetRig::kPosition, NSAppleEventDescriptor::listDescriptor({}));
  rig_.log.take();
  tick();
  EXPECT_THAT(rig_.log.take(), ElementsAreArray(kTickScripts));
  EXPECT_EQ(rig_.progressBar->doubleValue(), 63.5);
  rig_.scripts.answerText(WidgetRig::kPosition, "soon");
  tick();
  EXPECT_EQ(rig_.progressBar->doubleValue(), 0.0);
}

TEST_F(ATick, SeesANewTrackByItsTitleAloneUpToNormalization) {
  rig_.playerPlays("Song B");
  EXPECT_TRUE(startsARefresh());
  EXPECT_EQ(rig_.songTitle->stringValue(), "Song B");
  rig_.playerPlays("song b\u0301");
  EXPECT_TRUE(startsARefresh());
  rig_.playerPlays("Caf\u00e9");
  EXPECT_TRUE(startsARefresh());
  rig_.playerPlays("Cafe\u0301", "other lyrics", 100, "99.0");
  EXPECT_FALSE(startsARefresh());
}

TEST_F(ATick, AfterThePlayerWasLostShowsNoSongOnceAndGoesOn) {
  rig_.scripts.fail(WidgetRig::kSong);
  rig_.scripts.answerText(WidgetRig::kState, "stopped");
  EXPECT_TRUE(startsARefresh());
  EXPECT_EQ(rig_.songTitle->stringValue(), "No Song Playing");
  EXPECT_FALSE(startsARefresh());
  EXPECT_TRUE(rig_.inside.timer()->isValid());
}

TEST_F(ATick, WithoutATitleOutletRefreshesEachTime) {
  rig_.songTitle = nullptr;
  rig_.progressBar = nullptr;
  EXPECT_TRUE(startsARefresh());
  EXPECT_TRUE(startsARefresh());
}

TEST_F(ATick, ThatFallsDueDuringAClickComesBeforeTheTimerIsStoppedAndIsTheLast) {
  rig_.scripts.answerText(WidgetRig::kState, "paused");
  rig_.scripts.setObserver([this](const std::string& text) {
    rig_.log.add("script: " + text);
    if (text == "previous track") rig_.clock.advance(std::chrono::seconds(5));
  });
  rig_.onMain([this] { rig_.controller->previousButtonClicked(*rig_.otherButton); });
  EXPECT_THAT(rig_.log.take(), testing::Not(testing::Contains("script: player position")));

  rig_.loop.runTurn();
  EXPECT_THAT(rig_.log.take(), testing::Contains("script: player position").Times(1));
  EXPECT_EQ(rig_.inside.timer(), nullptr);

  rig_.settle();
  rig_.log.take();
  tick();
  EXPECT_THAT(rig_.log.take(), testing::IsEmpty());
  EXPECT_EQ(rig_.inside.timer(), nullptr);
}

}  // namespace
}  // namespace Corvella
