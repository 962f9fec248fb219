#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSTextView.h"
#include "tests/support/InterfaceElement.h"

namespace {

constexpr auto most = std::numeric_limits<std::int64_t>::max();
constexpr auto least = std::numeric_limits<std::int64_t>::min();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct ResizeRow {
  unsigned mask;
  NSRect before;
  NSRect after;
};

// The superview grows from 320 x 285 to 350 x 405. The view is filled by one of its own.
TEST(ASubviewOfAGrowingView, FollowsByItsAutoresizingMask) {
  const auto margins = NSViewMinXMargin | NSViewMaxXMargin | NSViewMinYMargin;
  const auto sizable = NSViewWidthSizable | NSViewHeightSizable;
  const auto frame = NSMakeRect(10, 20, 30, 40);
  const std::vector<ResizeRow> rows{
      {NSViewMinXMargin | NSViewMinYMargin, frame, NSMakeRect(40, 140, 30, 40)},
      {NSViewMaxXMargin | NSViewMaxYMargin, frame, frame},
      {sizable, NSMakeRect(20, 0, 280, 0), NSMakeRect(20, 0, 310, 120)},
      {NSViewMinXMargin | NSViewMaxXMargin, frame, NSMakeRect(25, 20, 30, 40)},
      {margins | sizable, frame, NSMakeRect(20, 80, 40, 100)}};
  for (const auto& [mask, before, after] : rows) {
    const auto root = std::make_shared<NSView>(NSMakeRect(0, 0, 320, 285));
    const auto view = std::make_shared<NSView>(before);
    const auto inner = std::make_shared<NSView>(NSRect{.origin = {}, .size = before.size});
    view->setAutoresizingMask(mask);
    inner->setAutoresizingMask(sizable);
    root->addSubview(view);
    view->addSubview(inner);
    for (const auto& [size, expected] :
         {std::pair(NSSize{350, 405}, after), {{320, 285}, before}}) {
      root->setFrameSize(size);
      EXPECT_EQ(view->frame(), expected) << "mask " << mask;
      EXPECT_EQ(inner->frame().size, expected.size) << "mask " << mask;
    }
  }
}

TEST(AView, IsNeverSmallerThanNothingAndAlwaysFinite) {
  NSView view(NSMakeRect(1, 2, 3, 4));
  view.setFrameSize({.width = -5, .height = 6});
  view.setFrameSize({.width = notANumber, .height = 8});
  EXPECT_EQ(view.frame(), NSMakeRect(1, 2, 0, 6));
}

template <class View, class Change>
void expectMarkedByTheFirst(const char* name, Change change) {
  View view;
  EXPECT_TRUE(view.needsDisplay()) << name;
  for (const bool expected : {true, false}) {
    view.setNeedsDisplay(false);
    change(view);
    EXPECT_EQ(view.needsDisplay(), expected) << name;
  }
}

TEST(AViewThatIsChanged, IsMarkedForDisplayByTheFirstChangeOnly) {
  const auto font = NSFont::systemFontOfSize(15);
  expectMarkedByTheFirst<NSTextField>("text", [](auto& field) { field.setStringValue("♫"); });
  expectMarkedByTheFirst<NSButton>("enabled", [](auto& button) { button.setEnabled(false); });
  expectMarkedByTheFirst<NSView>("frame", [](auto& v) { v.setFrame(NSMakeRect(1, 0, 0, 0)); });
  expectMarkedByTheFirst<NSTextView>("lyrics", [](auto& view) { view.setString("♫"); });
  expectMarkedByTheFirst<NSTextView>("font", [&](auto& view) { view.setFont(font); });
  expectMarkedByTheFirst<NSSlider>("value", [](auto& slider) { slider.setIntegerValue(1); });
  expectMarkedByTheFirst<NSSlider>("range", [](auto& slider) { slider.setMaxValue(100); });
  expectMarkedByTheFirst<NSProgressIndicator>("end", [](auto& bar) { bar.setMaxValue(5); });
}

TEST(ALevelIndicator, IsMarkedForDisplayWhenItsCellChanges) {
  const auto indicator = std::make_shared<NSLevelIndicator>();
  const auto cell = NSLevelIndicatorCell::initWithLevelIndicatorStyle(NSRatingLevelIndicatorStyle);
  indicator->setCell(cell);
  for (const bool highlighted : {false, true}) {
    indicator->setNeedsDisplay(false);
    cell->setHighlighted(highlighted);
    EXPECT_EQ(indicator->needsDisplay(), highlighted);
  }
  EXPECT_EQ(NSLevelIndicatorCell::initWithLevelIndicatorStyle(NSLevelIndicatorStyle{4}), nullptr);
}

struct ValueRow {
  double minValue;
  double maxValue;
  double given;
  double expected;
  std::int64_t integer;
};

TEST(ASlider, KeepsItsValueInsideItsRange) {
  const std::vector<ValueRow> rows{{0, 100, 2.9, 2.9, 2},        {-5, 5, -2.9, -2.9, -2},
                                   {0, 100, 101, 100, 100},      {0, 100, -1, 0, 0},
                                   {0, 100, infinity, 100, 100}, {10, 5, 20, 10, 10},
                                   {10, 100, -infinity, 10, 10}, {10, 100, notANumber, 10, 10},
                                   {0, 1e300, 1e19, 1e19, most}, {-1e300, 0, -1e19, -1e19, least}};
  for (const auto& row : rows) {
    NSSlider slider;
    slider.setMinValue(row.minValue);
    slider.setMaxValue(row.maxValue);
    slider.setDoubleValue(row.given);
    EXPECT_EQ(slider.doubleValue(), row.expected) << row.given;
    EXPECT_EQ(slider.integerValue(), row.integer) << row.given;
  }
}

TEST(ASlider, MovesItsValueIntoANewRange) {
  NSSlider slider;
  slider.setMaxValue(100);
  slider.setIntegerValue(most);
  for (const double maxValue : {50.0, notANumber}) slider.setMaxValue(maxValue);
  EXPECT_EQ(slider.doubleValue(), 50);
  EXPECT_EQ(slider.maxValue(), 50);
  slider.setMaxValue(100);
  slider.setMinValue(60);
  EXPECT_EQ(slider.doubleValue(), 60);
  slider.setMinValue(-infinity);
  slider.setMaxValue(infinity);
  EXPECT_TRUE(std::isfinite(slider.maxValue() - slider.minValue()));
}

TEST(AProgressIndicator, KeepsAValueBeyondItsRange) {
  NSProgressIndicator bar;
  bar.setDoubleValue(150);
  EXPECT_EQ(bar.doubleValue(), 150);
  bar.setDoubleValue(notANumber);
  EXPECT_EQ(bar.doubleValue(), 0);
}

TEST(AButton, SendsItsActionWhenClickedAndEnabled) {
  NSButton button;
  button.performClick();
  int clicks = 0;
  button.setAction([&](NSControl& sender) {
    sender.setAction(nullptr);  // An action may take itself away.
    ++clicks;
  });
  for (const bool enabled : {false, true}) {
    button.setEnabled(enabled);
    button.performClick();
    EXPECT_EQ(clicks, enabled ? 1 : 0);
  }
  EXPECT_FALSE(button.sendAction());
}

class AViewOfAnInterfaceFile : public testing::Test, protected InterfaceElement {};

TEST_F(AViewOfAnInterfaceFile, TakesItsPlaceStateRangeAndValueAndRefusesWhatIsNoNumber) {
  auto& frame = coder.encodeChild("frame", "Some.xib:8");
  for (const char* const key : {"x", "y", "width", "height"}) frame.encodeString(key, "12.5");
  auto& cell = coder.encodeChild("cell", "Some.xib:10");
  cell.encodeString("enabled", "NO");
  cell.encodeString("maxValue", "5");
  cell.encodeString("doubleValue", "9");
  const NSLevelIndicator indicator(coder);
  EXPECT_EQ(indicator.frame(), NSMakeRect(12.5, 12.5, 12.5, 12.5));
  EXPECT_FALSE(indicator.isEnabled());
  EXPECT_EQ(indicator.integerValue(), 5);
  for (const std::string text : {"", "12pt", "inf", "nan", "1e999", "-1"}) {
    frame.encodeString("width", text);
    EXPECT_THAT([&] { NSButton{coder}; }, testing::ThrowsMessage<std::runtime_error>(
                                              "Some.xib:8: width cannot be '" + text + "'"));
  }
}

TEST_F(AViewOfAnInterfaceFile, TakesItsColourByNameOrByItsParts) {
  using Attributes = std::vector<std::pair<const char*, const char*>>;
  const std::vector<std::pair<Attributes, NSColor>> rows{
      {{{"name", "lightGrayColor"}, {"white", "1"}}, NSColor::lightGrayColor()},
      {{{"name", "labelColor"}}, NSColor::labelColor()},
      {{{"white", "0.5"}, {"alpha", "0.25"}, {"red", "1"}}, {0.5, 0.5, 0.5, 0.25}},
      {{{"red", "0.1"}, {"green", "0.2"}, {"blue", "0.3"}}, {0.1, 0.2, 0.3, 1}}};
  EXPECT_EQ(NSTextField(coder).textColor(), NSColor::labelColor());
  for (const auto& [attributes, expected] : rows) {
    auto& color = coder.encodeChild("textColor", "Some.xib:2");
    for (const auto& [key, value] : attributes) color.encodeString(key, value);
    EXPECT_EQ(NSTextField(coder).textColor(), expected) << attributes[0].second;
  }
}

TEST_F(AViewOfAnInterfaceFile, FallsBackWhereAFontIsMissingAndRefusesUnknownWords) {
  auto& font = coder.encodeChild("font", "Some.xib:2");
  font.encodeString("name", "Helvetica Neue");
  font.encodeString("size", "15");
  EXPECT_EQ(NSTextField(coder).font()->pointSize(), 15);
  font.encodeString("name", "Missing");
  EXPECT_EQ(NSTextField(coder).font(), nullptr);
  coder.encodeString("alignment", "centre");
  EXPECT_THROW(NSTextField{coder}, std::runtime_error);
}

struct ChangeRow {
  std::function<void()> change;
  int measurements;  ///< How often the text is measured until its layout is known.
  int lines;
};

TEST_F(AViewOfAnInterfaceFile, MeasuresItsTextWhenAskedAndOnceUntilTextFontOrWidthChanges) {
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
    const int before = measurer.measurements;
    change();
    const bool isLaidOut = layoutManager.usedRectForTextContainer(container).size.height > 0;
    EXPECT_EQ(isLaidOut, measurements == 0);
    EXPECT_EQ(measurer.measurements, before);
    for (int i = 0; i < 2; ++i) layoutManager.ensureLayoutForTextContainer(container);
    EXPECT_EQ(measurer.measurements, before + measurements);
    EXPECT_EQ(layoutManager.usedRectForTextContainer(container).size.height,
              lines * FixedTextMeasurer::lineHeight);
  }
}

}  // namespace
