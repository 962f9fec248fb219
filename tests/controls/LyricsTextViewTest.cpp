#include <memory>
#include <optional>

#include <gtest/gtest.h>

#include "controls/LyricsTextView.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"

namespace Corvella {
namespace {

TEST(ALyricsViewOfAnInterfaceFile, TellsTheHeightOfTheTextItHasNow) {
  const FixedTextMeasurer measurer;
  const FixedFontFinder fonts;
  NSCoder coder("Some.xib:1", measurer, fonts);
  coder.encodeChild("frame", "Some.xib:2").encodeString("width", "100");
  LyricsTextView view(coder);

  view.setString("la");
  EXPECT_EQ(view.textHeight(), 12);
  view.setString("la la la la\nla\n");
  EXPECT_EQ(view.textHeight(), 48);
  EXPECT_EQ(view.textHeight(), 48);
  EXPECT_EQ(measurer.measurements(), 2);
}

TEST(ALyricsViewMadeByCode, HasAHeightOnlyWithALayoutManagerAndAContainer) {
  const FixedTextMeasurer measurer;
  LyricsTextView view;
  view.setString("la");
  EXPECT_EQ(view.textHeight(), std::nullopt);

  view.setLayoutManager(std::make_shared<NSLayoutManager>(measurer));
  EXPECT_EQ(view.textHeight(), std::nullopt);
  view.setTextContainer(std::make_shared<NSTextContainer>(100));
  EXPECT_EQ(view.textHeight(), 12);
  view.setLayoutManager(nullptr);
  EXPECT_EQ(view.textHeight(), std::nullopt);
}

TEST(ALyricsView, AsksForALayoutWhenTheUserChangedItsTextAndNotWhenTheProgramDid) {
  LyricsTextView view;
  view.setString("la");
  EXPECT_FALSE(view.needsUpdateConstraints());
  view.setNeedsDisplay(false);
  static_cast<NSTextView&>(view).didChangeText();
  EXPECT_TRUE(view.needsUpdateConstraints());
  EXPECT_TRUE(view.needsDisplay());  // The base has handled the change, too.
}

}  // namespace
}  // namespace Corvella
