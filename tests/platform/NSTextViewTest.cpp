#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "platform/appkit/NSTextView.h"
#include "tests/support/InterfaceElement.h"

namespace {

struct ChangeRow {
  std::function<void()> change;
  int measurements;  ///< How often the text is measured until its layout is known.
  int lines;
};

class ATextViewOfAnInterfaceFile : public testing::Test, protected InterfaceElement {};

TEST_F(ATextViewOfAnInterfaceFile, MeasuresWhenAskedAndOnceUntilItsTextFontOrWidthChanges) {
  NSTextView view(coder);
  auto& layoutManager = *view.layoutManager();
  const auto& container = *view.textContainer();
  const auto changeFont = [&](double size) {
    view.setFont(NSFont::fontWithName("Helvetica Neue", size, fonts));
  };
  view.setFrame(NSMakeRect(0, 0, 100, 0));
  const std::vector<ChangeRow> rows{
      {[&] { view.setString("eleven char"); }, 1, 2},
      {[&] { changeFont(15); }, 1, 2},
      {[&] { changeFont(16); }, 1, 2},
      {[&] { view.setFrameSize({.width = 50, .height = 0}); }, 1, 3},
      {[&] { view.setString("eleven char"); }, 0, 3},
      {[&] { changeFont(16); }, 0, 3},
      {[&] { view.setFrameSize({.width = 50, .height = 500}); }, 0, 3},
      {[&] { view.setAlignment(NSTextAlignmentCenter); }, 0, 3},
      {[&] { view.setTextColor(NSColor::lightGrayColor()); }, 0, 3}};
  for (const auto& [change, measurements, lines] : rows) {
    const int before = measurer.measurements();
    change();
    const bool isLaidOut = layoutManager.usedRectForTextContainer(container).size.height > 0;
    EXPECT_EQ(isLaidOut, measurements == 0);
    EXPECT_EQ(measurer.measurements(), before);
    for (int i = 0; i < 2; ++i) layoutManager.ensureLayoutForTextContainer(container);
    EXPECT_EQ(measurer.measurements(), before + measurements);
    EXPECT_EQ(layoutManager.usedRectForTextContainer(container).size.height,
              lines * FixedTextMeasurer::lineHeight);
  }
}

}  // namespace
