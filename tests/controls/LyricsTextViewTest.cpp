#include <memory>
#include <optional>

#include <gtest/gtest.h>

#include "controls/LyricsTextView.h"
#include "tests/support/InterfaceElement.h"

namespace Corvella {
namespace {

class ALyricsView : public testing::Test, protected InterfaceElement {};

TEST_F(ALyricsView, TellsTheHeightOfTheTextItHasNow) {
  coder.encodeChild("frame", "Some.xib:2").encodeString("width", "100");
  LyricsTextView view(coder);
  view.setString("la");
  EXPECT_EQ(view.textHeight(), 12);
  view.setString("la la la la\nla\n");
  EXPECT_EQ(view.textHeight(), 48);
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
