#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSTextView.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"

namespace {

using Integers = std::numeric_limits<std::int64_t>;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct ValueRow {
  const char* name;
  double minValue;
  double maxValue;
  double given;
  double expected;
  std::int64_t integer;
};

TEST(ASlider, KeepsItsValueInsideItsRange) {
  const std::vector<ValueRow> rows{{"cut off not rounded", 0, 100, 2.9, 2.9, 2},
                                   {"cut off towards zero", -5, 5, -2.9, -2.9, -2},
                                   {"above", 0, 100, 101, 100, 100},
                                   {"below", 0, 100, -1, 0, 0},
                                   {"infinite", 0, 100, infinity, 100, 100},
                                   {"minus infinite", 10, 100, -infinity, 10, 10},
                                   {"not a number", 10, 100, notANumber, 10, 10},
                                   {"ends the wrong way round", 10, 5, 20, 10, 10},
                                   {"beyond integers", 0, 1e300, 1e19, 1e19, Integers::max()},
                                   {"below integers", -1e300, 0, -1e19, -1e19, Integers::min()}};
  for (const auto& row : rows) {
    NSSlider slider;
    slider.setMinValue(row.minValue);
    slider.setMaxValue(row.maxValue);
    slider.setDoubleValue(row.given);
    EXPECT_EQ(slider.doubleValue(), row.expected) << row.name;
    EXPECT_EQ(slider.integerValue(), row.integer) << row.name;
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
  SCOPED_TRACE(name);
  const auto view = std::make_shared<View>();
  EXPECT_TRUE(view->needsDisplay());
  for (const bool expected : {true, false}) {
    view->setNeedsDisplay(false);
    change(*view);
    EXPECT_EQ(view->needsDisplay(), expected);
  }
}

TEST(AControlThatIsChanged, IsMarkedForDisplayByTheFirstChangeOnly) {
  const auto picture = std::make_shared<const NSImage>();
  expectMarkedByTheFirst<NSTextField>("text", [](auto& field) { field.setStringValue("♫"); });
  expectMarkedByTheFirst<NSButton>("title", [](auto& button) { button.setTitle("▶"); });
  expectMarkedByTheFirst<NSButton>("enabled", [](auto& button) { button.setEnabled(false); });
  expectMarkedByTheFirst<NSView>("frame", [](auto& v) { v.setFrame(NSMakeRect(1, 0, 0, 0)); });
  expectMarkedByTheFirst<NSImageView>("image", [&](auto& view) { view.setImage(picture); });
  expectMarkedByTheFirst<NSTextView>("text", [](auto& view) { view.setString("♫"); });
  expectMarkedByTheFirst<NSTextView>(
      "font", [](auto& view) { view.setFont(NSFont::systemFontOfSize(15)); });
  expectMarkedByTheFirst<NSTextView>("alignment",
                                     [](auto& view) { view.setAlignment(NSTextAlignmentCenter); });
  expectMarkedByTheFirst<NSSlider>("value", [](auto& slider) { slider.setIntegerValue(1); });
  expectMarkedByTheFirst<NSSlider>("range", [](auto& slider) { slider.setMaxValue(100); });
  expectMarkedByTheFirst<NSProgressIndicator>("value", [](auto& b) { b.setDoubleValue(5); });
  expectMarkedByTheFirst<NSProgressIndicator>("range", [](auto& b) { b.setMaxValue(5); });
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
  int clicks = 0;
  button.performClick();
  button.setAction([&](NSControl& sender) {
    EXPECT_EQ(&sender, &button);
    sender.setAction(nullptr);  // An action may take itself away.
    ++clicks;
  });
  button.setEnabled(false);
  button.performClick();
  EXPECT_EQ(clicks, 0);
  button.setEnabled(true);
  button.performClick();
  EXPECT_EQ(clicks, 1);
  EXPECT_FALSE(button.sendAction());
}

class AControlOfAnInterfaceFile : public testing::Test {
 protected:
  FixedTextMeasurer measurer_;
  FixedFontFinder fonts_{"Installed"};
  NSCoder coder_{"Some.xib:1", measurer_, fonts_};
};

TEST_F(AControlOfAnInterfaceFile, TakesItsRangeAndValueFromItsCell) {
  auto& cell = coder_.encodeChild("cell", "Some.xib:2");
  cell.encodeString("maxValue", "5");
  cell.encodeString("doubleValue", "9");
  EXPECT_EQ(NSLevelIndicator(coder_).integerValue(), 5);
}

TEST_F(AControlOfAnInterfaceFile, FallsBackWhereAFontIsMissingAndRefusesUnknownWords) {
  auto& font = coder_.encodeChild("font", "Some.xib:2");
  font.encodeString("name", "Installed");
  font.encodeString("size", "15");
  EXPECT_EQ(NSTextField(coder_).font()->pointSize(), 15);
  font.encodeString("name", "Missing");
  EXPECT_EQ(NSTextField(coder_).font(), nullptr);
  coder_.encodeString("alignment", "centre");
  EXPECT_THROW(NSTextField{coder_}, std::runtime_error);
}

}  // namespace
