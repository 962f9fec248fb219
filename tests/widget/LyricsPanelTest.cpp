
#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

/// A folded panel whose track has ten lines of lyrics, 120 points high.
class AFoldedPanel : public testing::Test {
 protected:
  AFoldedPanel() {
    rig_.playerPlays("Song", kTenLines);
    rig_.refresh();
    rig_.log.take();
  }

  void click() {
    rig_.onMain([this] { rig_.controller->seeMoreClicked(*rig_.toggleLyricsButton); });
  }
  double height() const { return rig_.controller->preferredContentSize().height; }

  static constexpr auto kTenLines = "1\n2\n3\n4\n5\n6\n7\n8\n9\n10";
  WidgetRig rig_;
};

TEST_F(AFoldedPanel, UnfoldsWhenTheLyricsHaveArrived) {
  click();
  EXPECT_THAT(rig_.log.take(), ElementsAre("to global"));
  EXPECT_TRUE(rig_.inside.expanded());
  EXPECT_EQ(rig_.toggleLyricsButton->title(), "Show Lyrics");

  rig_.globalQueue.runAll();
  EXPECT_THAT(rig_.log.take(), ElementsAre("script: get lyrics of current track", "to main"));
  rig_.loop.runTurn();
  EXPECT_THAT(rig_.log.take(), ElementsAre("lyricsView", "toggleLyricsButton", "size 320 x 405"));
  EXPECT_EQ(rig_.lyricsView->string(), kTenLines);
  EXPECT_EQ(rig_.toggleLyricsButton->title(), "Hide Lyrics");
}

TEST_F(AFoldedPanel, EmptiesTheLyricsWhenItFoldsAgain) {
  click();
  rig_.settle();
  rig_.log.take();
  click();
  EXPECT_THAT(rig_.log.take(), ElementsAre("lyricsView", "size 320 x 285", "toggleLyricsButton"));
  EXPECT_EQ(rig_.lyricsView->string(), "");
  EXPECT_EQ(rig_.toggleLyricsButton->title(), "Show Lyrics");
  EXPECT_FALSE(rig_.inside.expanded());
}

TEST_F(AFoldedPanel, IsLeftAloneWhileThereAreNoLyrics) {
  rig_.toggleLyricsButton->setTitle("No Lyrics");
  rig_.log.take();
  click();
  EXPECT_THAT(rig_.log.take(), testing::IsEmpty());
  EXPECT_FALSE(rig_.inside.expanded());
  rig_.toggleLyricsButton->setTitle("no lyrics");
  click();
  EXPECT_TRUE(rig_.inside.expanded());
}

TEST_F(AFoldedPanel, ClickedTwiceBeforeTheLyricsArriveShowsThemWhileFolded) {
  click();
  click();
  EXPECT_EQ(height(), 285.0);
  rig_.settle();
  EXPECT_FALSE(rig_.inside.expanded());
  EXPECT_EQ(rig_.toggleLyricsButton->title(), "Hide Lyrics");
  EXPECT_EQ(rig_.lyricsView->string(), kTenLines);
  EXPECT_EQ(height(), 405.0);
  click();
  EXPECT_TRUE(rig_.inside.expanded());
  EXPECT_EQ(rig_.globalQueue.size(), 1U);
}

TEST_F(AFoldedPanel, UnfoldsWithoutTextWhenTheQueryFailsAndToTheInitialHeightWithoutAView) {
  rig_.scripts.fail(WidgetRig::kLyrics);
  click();
  rig_.settle();
  EXPECT_EQ(rig_.lyricsView->string(), "");
  EXPECT_EQ(rig_.toggleLyricsButton->title(), "Hide Lyrics");
  EXPECT_EQ(height(), 285.0 + FixedTextMeasurer::lineHeight);

  click();
  rig_.controller->setLyricsView(nullptr);
  click();
  rig_.settle();
  EXPECT_EQ(rig_.toggleLyricsButton->title(), "Hide Lyrics");
  EXPECT_EQ(height(), 285.0);
}

TEST_F(AFoldedPanel, ReadsAndWritesTheButtonThatWasClickedAndHoldsItMeanwhile) {
  rig_.toggleLyricsButton->setTitle("No Lyrics");
  rig_.otherButton->setTitle("Show Lyrics");
  rig_.onMain([this] { rig_.controller->seeMoreClicked(*rig_.otherButton); });
  const std::weak_ptr<NSButton> other = std::exchange(rig_.otherButton, nullptr);
  ASSERT_FALSE(other.expired());
  rig_.log.take();
  rig_.globalQueue.run(0, [&] {
    EXPECT_FALSE(other.expired());
    rig_.loop.runTurn();
    EXPECT_TRUE(other.expired());
  });
  EXPECT_THAT(rig_.log.take(), testing::Contains("otherButton"));
  EXPECT_EQ(rig_.toggleLyricsButton->title(), "No Lyrics");
}

}  // namespace
}  // namespace Corvella
