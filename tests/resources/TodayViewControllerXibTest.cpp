#include <algorithm>
#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSNibLoader.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/foundation/NSClassRegistry.h"
#include "tests/support/InterfaceElement.h"
#include "tests/support/RecordingOwner.h"

namespace Corvella {
namespace {

class TheWidgetsInterfaceFile : public testing::Test, protected InterfaceElement {
 protected:
  TheWidgetsInterfaceFile() {
    classes_.registerClass("Corvella.TodayViewController",
                           NSClass::initialised<RecordingOwner>(nullptr));
    classes_.registerClass("Corvella.LyricsTextView", NSClass::decoded<LyricsTextView>());
    classes_.registerClass("Corvella.SongRatingLevelIndicatorCell",
                           NSClass::decoded<SongRatingLevelIndicatorCell>());
    root_ = owner_.view();
  }

  template <class Class>
  Class& outlet(const std::string& name) const {
    return dynamic_cast<Class&>(*owner_.outlets.at(name));
  }

  NSClassRegistry classes_;
  NSBundle bundle_{CORVELLA_RESOURCES};
  NSNibLoader loader_{bundle_, {classes_, measurer, fonts}};
  RecordingOwner owner_{loader_, "TodayViewController", nullptr};
  std::shared_ptr<NSView> root_;
};

TEST_F(TheWidgetsInterfaceFile, ConnectsEachViewUnderItsIdentifier) {
  EXPECT_EQ(owner_.outlets.size(), 11U);  // Ten, and the view.
  for (const auto& [name, object] : owner_.outlets) {
    const auto view = std::dynamic_pointer_cast<NSView>(object);
    EXPECT_TRUE(!view || view == root_ || view->identifier() == name) << name;
  }
  EXPECT_EQ(outlet<NSLevelIndicator>("songRatingIndicator").cell().get(),
            &outlet<SongRatingLevelIndicatorCell>("songRatingCell"));
}

TEST_F(TheWidgetsInterfaceFile, SetsItsControlsUpForUse) {
  const auto& cell = outlet<SongRatingLevelIndicatorCell>("songRatingCell");
  EXPECT_EQ(cell.levelIndicatorStyle(), NSRatingLevelIndicatorStyle);
  EXPECT_NE(cell.focusRingType(), NSFocusRingTypeNone);  // For those who use keys.
  EXPECT_TRUE(cell.isEditable() && cell.isContinuous());
  EXPECT_TRUE(outlet<NSSlider>("soundVolume").isContinuous());
  EXPECT_EQ(outlet<NSSlider>("soundVolume").maxValue(), 100);
  EXPECT_EQ(outlet<NSProgressIndicator>("progressBar").maxValue(), 100);
  EXPECT_TRUE(outlet<LyricsTextView>("lyricsView").textHeight());
  // All but the button of the lyrics and the caption of the volume, which their texts name.
  EXPECT_EQ(std::ranges::count(root_->subviews(), "", &NSView::accessibilityLabel), 2);
}

TEST_F(TheWidgetsInterfaceFile, KeepsItsViewsWithinTheMarginsAndGivesNewHeightToTheLyrics) {
  EXPECT_EQ(root_->frame(), NSMakeRect(0, 0, 320, 285));
  const NSSize sizes[] = {{320, 285}, {400, 285}, {320, 405}, {320, 285}};
  std::map<NSView*, double> gapsAbove;
  for (const auto size : sizes) {
    root_->setFrameSize(size);
    for (const auto& view : root_->subviews()) {
      const NSRect frame = view->frame();
      const double above = size.height - frame.origin.y - frame.size.height;
      const bool within = frame.origin.x >= 16 && frame.origin.y >= 8 && above >= 16 &&
                          frame.origin.x + frame.size.width <= size.width - 16;
      EXPECT_TRUE(within) << view->identifier();
      EXPECT_EQ(above, gapsAbove.try_emplace(view.get(), above).first->second);
    }
    EXPECT_EQ(outlet<NSView>("lyricsView").frame(),
              NSMakeRect(16, 13, size.width - 32, size.height - 285));
  }
}

}  // namespace
}  // namespace Corvella
