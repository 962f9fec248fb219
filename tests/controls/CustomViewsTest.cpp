#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "tests/support/InterfaceElement.h"

namespace Corvella {
namespace {

using Cell = SongRatingLevelIndicatorCell;

class ARatingCell : public testing::Test, protected InterfaceElement {};

/// Its style, whether it is highlighted, editable and continuous, and its focus ring.
auto settingsOf(const Cell& cell) {
  return std::tuple(cell.levelIndicatorStyle(), cell.isHighlighted(), cell.isEditable(),
                    cell.isContinuous(), cell.focusRingType());
}

TEST_F(ARatingCell, OfAnyStyleIsAHighlightedRatingThatTheUserSets) {
  const std::tuple settings(NSRatingLevelIndicatorStyle, true, true, true, NSFocusRingTypeNone);
  for (const auto style : {NSRelevancyLevelIndicatorStyle, NSLevelIndicatorStyle{99}}) {
    EXPECT_EQ(settingsOf(*Cell::initWithLevelIndicatorStyle(style)), settings);
  }
}

TEST_F(ARatingCell, OfAnInterfaceFileKeepsItsSettingsAndIsHighlightedAfterAnyWrite) {
  EXPECT_EQ(settingsOf(Cell(coder)), std::tuple(NSRelevancyLevelIndicatorStyle, false, false, false,
                                                NSFocusRingTypeDefault));
  coder.encodeString("levelIndicatorStyle", "discreteCapacity");
  coder.encodeString("editable", "YES");
  coder.encodeString("focusRingType", "exterior");
  for (const bool written : {false, true}) {
    Cell cell(coder);
    EXPECT_EQ(settingsOf(cell), std::tuple(NSDiscreteCapacityLevelIndicatorStyle, false, true,
                                           false, NSFocusRingTypeExterior));
    static_cast<NSLevelIndicatorCell&>(cell).setHighlighted(written);
    EXPECT_TRUE(cell.isHighlighted());
  }
}

TEST(ARatingCellDeathTest, StopsTheProgramInAnUnsupportedInitialiser) {
  const testing::KilledBySignal stopped(SIGABRT);
  const std::string name = "' for class 'Corvella\\.SongRatingLevelIndicatorCell'";
  EXPECT_EXIT(Cell::initTextCell("text"), stopped, "init\\(textCell:\\)" + name);
  EXPECT_EXIT(Cell::initImageCell(nullptr), stopped, "init\\(imageCell:\\)" + name);
  EXPECT_EXIT(Cell::init(), stopped, "init\\(\\)" + name);
}

class ALyricsView : public testing::Test, protected InterfaceElement {};

TEST_F(ALyricsView, TellsTheHeightOfTheTextItHasNow) {
  coder.encodeChild("frame", "Some.xib:2").encodeString("width", "100");
  LyricsTextView view(coder);
  for (const auto& [text, height] : {std::pair("la", 12), {"la la la la\nla\n", 48}}) {
    view.setString(text);
    EXPECT_EQ(view.textHeight(), height);
  }
}

TEST_F(ALyricsView, HasAHeightOnlyWithALayoutManagerAndAContainer) {
  for (const auto& container :
       {std::shared_ptr<NSTextContainer>(), std::make_shared<NSTextContainer>(100)}) {
    LyricsTextView view({}, container);
    EXPECT_EQ(view.textHeight(), std::nullopt);
    view.setLayoutManager(std::make_shared<NSLayoutManager>(measurer));
    EXPECT_EQ(view.textHeight(), container ? std::optional(12.0) : std::nullopt);
  }
}

TEST_F(ALyricsView, AsksForALayoutWhenTheUserChangedItsTextAndNotWhenTheProgramDid) {
  LyricsTextView view;
  view.setString("la");
  EXPECT_FALSE(view.needsUpdateConstraints());
  view.setNeedsDisplay(false);
  view.didChangeText();
  EXPECT_TRUE(view.needsUpdateConstraints());
  EXPECT_TRUE(view.needsDisplay());  // The base has handled the change, too.
}

}  // namespace
}  // namespace Corvella
