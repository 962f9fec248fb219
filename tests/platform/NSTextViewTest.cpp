#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "platform/appkit/NSTextView.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"

namespace {

class ATextViewOfAnInterfaceFile : public testing::Test {
 protected:
  static NSCoder coder(const FixedTextMeasurer& measurer, const FixedFontFinder& fonts) {
    NSCoder coder("Some.xib:1", measurer, fonts);
    coder.encodeChild("frame", "Some.xib:2").encodeString("width", "100");
    return coder;
  }

  double layOut() {
    view_.layoutManager()->ensureLayoutForTextContainer(*view_.textContainer());
    return usedHeight();
  }
  double usedHeight() const {
    return view_.layoutManager()->usedRectForTextContainer(*view_.textContainer()).size.height;
  }

  int measurementsOfTwoReadings() {
    const int before = measurer_.measurements();
    layOut();
    layOut();
    return measurer_.measurements() - before;
  }

  FixedTextMeasurer measurer_;
  FixedFontFinder fonts_{"Helvetica Neue"};
  NSTextView view_{coder(measurer_, fonts_)};
};

TEST_F(ATextViewOfAnInterfaceFile, MeasuresOnceUntilItsTextFontOrWidthChanges) {
  const auto font = [&](double size) {
    return NSFont::fontWithName("Helvetica Neue", size, fonts_);
  };
  EXPECT_EQ(measurementsOfTwoReadings(), 1);
  const std::vector<std::function<void()>> changes{
      [&] { view_.setString("eleven char"); }, [&] { view_.setFont(font(15)); },
      [&] { view_.setFont(font(16)); }, [&] { view_.setFrameSize({.width = 50, .height = 0}); }};
  for (const auto& change : changes) {
    change();
    EXPECT_EQ(measurementsOfTwoReadings(), 1);
  }

  view_.setString("eleven char");
  view_.setFont(font(16));
  view_.setFrameSize({.width = 50, .height = 500});
  view_.setAlignment(NSTextAlignmentCenter);
  view_.setTextColor(NSColor::lightGrayColor());
  EXPECT_EQ(measurementsOfTwoReadings(), 0);
}

TEST_F(ATextViewOfAnInterfaceFile, LaysOutOnlyWhenAskedAndBreaksItsLinesAtItsNewWidth) {
  view_.setString("eleven char");
  EXPECT_EQ(measurer_.measurements(), 0);
  EXPECT_EQ(usedHeight(), 0);
  EXPECT_EQ(layOut(), 2 * FixedTextMeasurer::lineHeight);
  view_.setFrame(NSMakeRect(0, 0, 110, 0));
  EXPECT_EQ(usedHeight(), 0);
  EXPECT_EQ(layOut(), FixedTextMeasurer::lineHeight);
}

}  // namespace
