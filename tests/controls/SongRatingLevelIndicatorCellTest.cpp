#include <csignal>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "controls/SongRatingLevelIndicatorCell.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"

namespace Corvella {
namespace {

TEST(ARatingCellOfAnyStyle, IsAHighlightedRatingThatTheUserSets) {
  for (const auto style : {NSRelevancyLevelIndicatorStyle, NSLevelIndicatorStyle{99}}) {
    const auto cell = SongRatingLevelIndicatorCell::initWithLevelIndicatorStyle(style);
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(cell->levelIndicatorStyle(), NSRatingLevelIndicatorStyle);
    EXPECT_TRUE(cell->isHighlighted());
    EXPECT_TRUE(cell->isEditable());
    EXPECT_TRUE(cell->isContinuous());
    EXPECT_EQ(cell->focusRingType(), NSFocusRingTypeNone);
  }
}

class ARatingCellOfAnInterfaceFile : public testing::Test {
 protected:
  FixedTextMeasurer measurer_;
  FixedFontFinder fonts_;
  NSCoder coder_{"Some.xib:1", measurer_, fonts_};
};

TEST_F(ARatingCellOfAnInterfaceFile, KeepsTheSettingsOfTheFile) {
  const SongRatingLevelIndicatorCell bare(coder_);
  EXPECT_FALSE(bare.isHighlighted());
  EXPECT_FALSE(bare.isEditable());
  EXPECT_FALSE(bare.isContinuous());

  coder_.encodeString("levelIndicatorStyle", "discreteCapacity");
  coder_.encodeString("editable", "YES");
  coder_.encodeString("focusRingType", "exterior");
  const SongRatingLevelIndicatorCell cell(coder_);
  EXPECT_EQ(cell.levelIndicatorStyle(), NSDiscreteCapacityLevelIndicatorStyle);
  EXPECT_TRUE(cell.isEditable());
  EXPECT_FALSE(cell.isContinuous());
  EXPECT_EQ(cell.focusRingType(), NSFocusRingTypeExterior);
}

TEST_F(ARatingCellOfAnInterfaceFile, IsHighlightedAfterAnyWrite) {
  for (const bool written : {false, true}) {
    const auto cell = std::make_shared<SongRatingLevelIndicatorCell>(coder_);
    NSLevelIndicatorCell& asThePlatformSeesIt = *cell;
    asThePlatformSeesIt.setHighlighted(written);
    EXPECT_TRUE(asThePlatformSeesIt.isHighlighted());
  }
}

TEST(ARatingCellDeathTest, StopsTheProgramInAnUnsupportedInitialiser) {
  const testing::KilledBySignal stopped(SIGABRT);
  using Cell = SongRatingLevelIndicatorCell;
  const std::string name = ".*Corvella\\.SongRatingLevelIndicatorCell";
  EXPECT_EXIT(Cell::initTextCell("text"), stopped, "init\\(textCell:\\)" + name);
  EXPECT_EXIT(Cell::initImageCell(nullptr), stopped, "init\\(imageCell:\\)" + name);
  EXPECT_EXIT(Cell::init(), stopped, "init\\(\\)" + name);
}

}  // namespace
}  // namespace Corvella
