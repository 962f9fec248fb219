#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSViewController.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"

namespace {

struct ResizeRow {
  const char* name;
  unsigned mask;
  NSRect frame;
  NSRect expected;
};

// The superview grows from 320 x 285 to 350 x 405.
TEST(ASubviewOfAGrowingView, FollowsByItsAutoresizingMask) {
  const std::vector<ResizeRow> rows{
      {"keeps its distance from the top right", NSViewMinXMargin | NSViewMinYMargin,
       NSMakeRect(10, 20, 30, 40), NSMakeRect(40, 140, 30, 40)},
      {"keeps its distance from the bottom left", NSViewMaxXMargin | NSViewMaxYMargin,
       NSMakeRect(10, 20, 30, 40), NSMakeRect(10, 20, 30, 40)},
      {"lyrics of no height take the whole change", NSViewWidthSizable | NSViewHeightSizable,
       NSMakeRect(20, 0, 280, 0), NSMakeRect(20, 0, 310, 120)},
      {"stays centred", NSViewMinXMargin | NSViewMaxXMargin, NSMakeRect(145, 20, 30, 40),
       NSMakeRect(160, 20, 30, 40)},
      {"shares among three",
       NSViewMinXMargin | NSViewWidthSizable | NSViewMaxXMargin | NSViewMinYMargin |
           NSViewHeightSizable,
       NSMakeRect(10, 20, 30, 40), NSMakeRect(20, 80, 40, 100)}};
  for (const auto& [name, mask, frame, expected] : rows) {
    const auto root = std::make_shared<NSView>(NSMakeRect(0, 0, 320, 285));
    const auto view = std::make_shared<NSView>(frame);
    view->setAutoresizingMask(mask);
    root->addSubview(view);

    root->setFrameSize({.width = 350, .height = 405});
    EXPECT_EQ(view->frame(), expected) << name;

    root->setFrameSize({.width = 320, .height = 285});
    EXPECT_EQ(view->frame(), frame) << name;
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
  box->setAutoresizingMask(NSViewWidthSizable);
  inner->setAutoresizingMask(NSViewWidthSizable);
  root->addSubview(box);
  box->addSubview(inner);
  inner->setNeedsDisplay(false);

  root->setFrameSize({.width = 130, .height = 100});

  EXPECT_EQ(inner->frame().size.width, 130);
  EXPECT_TRUE(inner->needsDisplay());
  EXPECT_EQ(inner->superview(), box);
}

TEST(AViewOfAnInterfaceFile, TakesItsPlaceAndMaskAndRefusesWhatIsNoNumber) {
  const FixedTextMeasurer measurer;
  const FixedFontFinder fonts;
  NSCoder coder("Some.xib:7", measurer, fonts);
  auto& frame = coder.encodeChild("frame", "Some.xib:8");
  for (const char* const key : {"x", "y", "width", "height"}) frame.encodeString(key, "12.5");
  coder.encodeChild("autoresizingMask", "Some.xib:9").encodeString("heightSizable", "YES");
  coder.encodeChild("cell", "Some.xib:10").encodeString("enabled", "NO");
  const NSButton button(coder);
  EXPECT_EQ(button.frame(), NSMakeRect(12.5, 12.5, 12.5, 12.5));
  EXPECT_EQ(button.autoresizingMask(), NSViewHeightSizable);
  EXPECT_FALSE(button.isEnabled());

  for (const char* const text : {"", "12pt", "inf", "nan", "1e999"}) {
    frame.encodeString("width", text);
    try {
      const NSButton unreadable(coder);
      ADD_FAILURE() << "took \"" << text << '"';
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), "Some.xib:8: width: is not a number: \"" + std::string(text) + "\"");
    }
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

TEST(AViewController, LoadsItsViewOnceWhenItIsFirstAskedForAndRefusesAFileWithoutOne) {
  FakeLoader loader;
  NSViewController controller(loader);
  EXPECT_THROW(controller.view(), std::runtime_error);
  EXPECT_FALSE(controller.isViewLoaded());

  loader.root = std::make_shared<NSView>();
  EXPECT_EQ(controller.view(), loader.root);
  EXPECT_EQ(controller.view(), loader.root);
  EXPECT_EQ(loader.loads, 2);
}

TEST(AViewController, TellsTheHostOfEachNewPreferredSizeOnce) {
  const FakeLoader loader;
  NSViewController controller(loader);
  std::vector<NSSize> told;
  controller.setPreferredContentSizeObserver([&](NSSize size) {
    EXPECT_EQ(controller.preferredContentSize(), size);
    told.push_back(size);
  });
  controller.setPreferredContentSize({.width = 320, .height = 285});
  controller.setPreferredContentSize({.width = 320, .height = 285});
  controller.setPreferredContentSize(
      {.width = 320, .height = std::numeric_limits<double>::infinity()});
  controller.setPreferredContentSize({.width = 320, .height = -1});
  EXPECT_EQ(told, (std::vector<NSSize>{{.width = 320, .height = 285}, {.width = 320}}));
}

}  // namespace
