#include <memory>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "tests/support/WidgetRig.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

/// A folded panel whose track has ten lines of lyrics, 120 points high.
class AFoldedPanel : public testing::Test, protected WidgetRig {
 protected:
  AFoldedPanel() {
    playerPlays("Song", kTenLines);
    refresh();
    take();
  }

  void click() { call(&Widget::seeMoreClicked, *controller->toggleLyricsButton()); }
  void expectPanel(const std::string& title, const std::string& text, double height) {
    EXPECT_EQ(controller->toggleLyricsButton()->title(), title);
    EXPECT_EQ(controller->lyricsView()->string(), text);
    EXPECT_EQ(controller->preferredContentSize(), (NSSize{320, height}));
  }

  static constexpr auto kTenLines = "1\n2\n3\n4\n5\n6\n7\n8\n9\n10";
};

TEST_F(AFoldedPanel, UnfoldsWhenTheLyricsHaveArrivedAndFoldsAtOnce) {
  click();
  EXPECT_THAT(take(), ElementsAre("to global"));
  EXPECT_TRUE(inside.expanded());
  globalQueue.runAll();
  EXPECT_THAT(take(), ElementsAre("script: get lyrics of current track", "to main"));
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
