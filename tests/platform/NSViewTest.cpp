#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSViewController.h"
#include "tests/support/InterfaceElement.h"

namespace {

struct ResizeRow {
  unsigned mask;
  NSRect before;
  NSRect after;
};

// The superview grows from 320 x 285 to 350 x 405.
TEST(ASubviewOfAGrowingView, FollowsByItsAutoresizingMask) {
  const auto margins = NSViewMinXMargin | NSViewMaxXMargin | NSViewMinYMargin;
  const auto frame = NSMakeRect(10, 20, 30, 40);
  const std::vector<ResizeRow> rows{
      {NSViewMinXMargin | NSViewMinYMargin, frame, NSMakeRect(40, 140, 30, 40)},
      {NSViewMaxXMargin | NSViewMaxYMargin, frame, frame},
      {NSViewWidthSizable | NSViewHeightSizable, NSMakeRect(20, 0, 280, 0),
       NSMakeRect(20, 0, 310, 120)},
      {NSViewMinXMargin | NSViewMaxXMargin, frame, NSMakeRect(25, 20, 30, 40)},
      {margins | NSViewWidthSizable | NSViewHeightSizable, frame, NSMakeRect(20, 80, 40, 100)}};
  for (const auto& [mask, before, after] : rows) {
    const auto root = std::make_shared<NSView>(NSMakeRect(0, 0, 320, 285));
    const auto view = std::make_shared<NSView>(before);
    view->setAutoresizingMask(mask);
    root->addSubview(view);
    root->setFrameSize({.width = 350, .height = 405});
    EXPECT_EQ(view->frame(), after) << "mask " << mask;
    root->setFrameSize({.width = 320, .height = 285});
    EXPECT_EQ(view->frame(), before) << "mask " << mask;
  }
}

TEST(AView, IsNeverSmallerThanNothingAndAlwaysFinite) {
  NSView view(NSMakeRect(1, 2, 3, 4));
  view.setFrameSize({.width = -5, .height = 6});
  view.setFrameSize({.width = std::numeric_limits<double>::quiet_NaN(), .height = 8});
  EXPECT_EQ(view.frame(), NSMakeRect(1, 2, 0, 6));
}

TEST(AView, ResizesTheViewsWithinItsSubviewsToo) {
  const auto root = std::make_shared<NSView>(NSMakeRect(0, 0, 100, 100));
  const auto box = std::make_shared<NSView>(NSMakeRect(0, 0, 100, 50));
  const auto inner = std::make_shared<NSView>(NSMakeRect(0, 0, 100, 10));
  root->addSubview(box);
  box->addSubview(inner);
  for (const auto& view : {box, inner}) view->setAutoresizingMask(NSViewWidthSizable);
  inner->setNeedsDisplay(false);
  root->setFrameSize({.width = 130, .height = 100});
  EXPECT_EQ(inner->frame().size.width, 130);
  EXPECT_TRUE(inner->needsDisplay());
}

class AViewOfAnInterfaceFile : public testing::Test, protected InterfaceElement {};

TEST_F(AViewOfAnInterfaceFile, TakesItsPlaceAndMaskAndRefusesWhatIsNoNumber) {
  auto& frame = coder.encodeChild("frame", "Some.xib:8");
  for (const char* const key : {"x", "y", "width", "height"}) frame.encodeString(key, "12.5");
  coder.encodeChild("autoresizingMask", "Some.xib:9").encodeString("heightSizable", "YES");
  coder.encodeChild("cell", "Some.xib:10").encodeString("enabled", "NO");
  const NSButton button(coder);
  EXPECT_EQ(button.frame(), NSMakeRect(12.5, 12.5, 12.5, 12.5));
  EXPECT_FALSE(button.isEnabled());
  for (const std::string text : {"", "12pt", "inf", "nan", "1e999", "-1"}) {
    frame.encodeString("width", text);
    EXPECT_THAT([&] { NSButton{coder}; }, testing::ThrowsMessage<std::runtime_error>(
                                              "Some.xib:8: width cannot be '" + text + "'"));
  }
}

/// Connects a root view, or none, and counts how often it is asked to.
class FakeLoader final : public NSInterfaceLoader {
 public:
  void instantiate(std::string_view, const NSBundle*, NSViewController& owner) const override {
    ++loads;
    if (root) owner.connectOutlet("view", root);
  }

  std::shared_ptr<NSView> root;
  mutable int loads = 0;
};

class AViewController : public testing::Test {
 protected:
  FakeLoader loader_;
  NSViewController controller_{loader_};
};

TEST_F(AViewController, LoadsItsViewOnceWhenItIsFirstAskedForAndRefusesAFileWithoutOne) {
  EXPECT_THROW(controller_.view(), std::runtime_error);
  EXPECT_FALSE(controller_.isViewLoaded());
  loader_.root = std::make_shared<NSView>();
  for (int i = 0; i < 2; ++i) EXPECT_EQ(controller_.view(), loader_.root);
  EXPECT_EQ(loader_.loads, 2);
}

TEST_F(AViewController, TellsTheHostOfEachNewPreferredSizeOnce) {
  std::vector<NSSize> told;
  controller_.setPreferredContentSizeObserver([&](NSSize size) {
    EXPECT_EQ(controller_.preferredContentSize(), size);
    told.push_back(size);
  });
  for (const double height : {285.0, 285.0, std::numeric_limits<double>::infinity(), -1.0}) {
    controller_.setPreferredContentSize({.width = 320, .height = height});
  }
  EXPECT_EQ(told, (std::vector<NSSize>{{.width = 320, .height = 285}, {.width = 320}}));
}

}  // namespace
