#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSTextView.h"
#include "tests/support/InterfaceElement.h"

namespace {

using Integers = std::numeric_limits<std::int64_t>;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct ValueRow {
  double minValue;
  double maxValue;
  double given;
  double expected;
  std::int64_t integer;
};

TEST(ASlider, KeepsItsValueInsideItsRange) {
  const std::vector<ValueRow> rows{{0, 100, 2.9, 2.9, 2},
                                   {-5, 5, -2.9, -2.9, -2},
                                   {0, 100, 101, 100, 100},
                                   {0, 100, -1, 0, 0},
                                   {0, 100, infinity, 100, 100},
                                   {10, 100, -infinity, 10, 10},
                                   {10, 100, notANumber, 10, 10},
                                   {10, 5, 20, 10, 10},
                                   {0, 1e300, 1e19, 1e19, Integers::max()},
                                   {-1e300, 0, -1e19, -1e19, Integers::min()}};
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
  slider.setIntegerValue(Integers::max());
  slider.setMaxValue(50);
  EXPECT_EQ(slider.doubleValue(), 50);
  slider.setMaxValue(notANumber);
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
  EXPECT_EQ(bar.maxValue(), 100);
  EXPECT_EQ(bar.doubleValue(), 150);
  bar.setDoubleValue(notANumber);
  EXPECT_EQ(bar.doubleValue(), 0);
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

TEST(AControlThatIsChanged, IsMarkedForDisplayByTheFirstChangeOnly) {
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

class AControlOfAnInterfaceFile : public testing::Test, protected InterfaceElement {};

TEST_F(AControlOfAnInterfaceFile, TakesItsRangeAndValueFromItsCell) {
  auto& cell = coder.encodeChild("cell", "Some.xib:2");
  cell.encodeString("maxValue", "5");
  cell.encodeString("doubleValue", "9");
  EXPECT_EQ(NSLevelIndicator(coder).integerValue(), 5);
}

TEST_F(AControlOfAnInterfaceFile, TakesItsColourByNameOrByItsParts) {
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

TEST_F(AControlOfAnInterfaceFile, FallsBackWhereAFontIsMissingAndRefusesUnknownWords) {
  auto& font = coder.encodeChild("font", "Some.xib:2");
  font.encodeString("name", "Helvetica Neue");
  font.encodeString("size", "15");
  EXPECT_EQ(NSTextField(coder).font()->pointSize(), 15);
  font.encodeString("name", "Missing");
  EXPECT_EQ(NSTextField(coder).font(), nullptr);
  coder.encodeString("alignment", "centre");
  EXPECT_THROW(NSTextField{coder}, std::runtime_error);
}

}  // namespace
