#include <csignal>
#include <string>

#include <gtest/gtest.h>

#include "controls/SongRatingLevelIndicatorCell.h"
#include "tests/support/InterfaceElement.h"

namespace Corvella {
namespace {

using Cell = SongRatingLevelIndicatorCell;

class ARatingCell : public testing::Test, protected InterfaceElement {
 protected:
  static void expectCell(const Cell& cell, NSLevelIndicatorStyle style, bool highlighted,
                         bool editable, bool continuous, NSFocusRingType ring) {
    EXPECT_EQ(cell.levelIndicatorStyle(), style);
    EXPECT_EQ(cell.isHighlighted(), highlighted);
    EXPECT_EQ(cell.isEditable(), editable);
    EXPECT_EQ(cell.isContinuous(), continuous);
    EXPECT_EQ(cell.focusRingType(), ring);
  }
};

TEST_F(ARatingCell, OfAnyStyleIsAHighlightedRatingThatTheUserSets) {
  for (const auto style : {NSRelevancyLevelIndicatorStyle, NSLevelIndicatorStyle{99}}) {
    const auto cell = Cell::initWithLevelIndicatorStyle(style);
    ASSERT_NE(cell, nullptr);
    expectCell(*cell, NSRatingLevelIndicatorStyle, true, true, true, NSFocusRingTypeNone);
  }
}

TEST_F(ARatingCell, OfAnInterfaceFileKeepsItsSettingsAndIsHighlightedAfterAnyWrite) {
  expectCell(Cell(coder), NSRelevancyLevelIndicatorStyle, false, false, false,
             NSFocusRingTypeDefault);
  coder.encodeString("levelIndicatorStyle", "discreteCapacity");
  coder.encodeString("editable", "YES");
  coder.encodeString("focusRingType", "exterior");
  for (const bool written : {false, true}) {
    Cell cell(coder);
    expectCell(cell, NSDiscreteCapacityLevelIndicatorStyle, false, true, false,
               NSFocusRingTypeExterior);
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

}  // namespace
}  // namespace Corvella
