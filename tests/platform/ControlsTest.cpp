#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "tests/support/FixedFontFinder.h"
#include "tests/support/FixedTextMeasurer.h"
#include "tests/support/RowName.h"

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

class ASliderOfSomeRange : public testing::TestWithParam<ValueRow> {};

TEST_P(ASliderOfSomeRange, KeepsItsValueInside) {
  const auto& row = GetParam();
  NSSlider slider;
  slider.setMinValue(row.minValue);
  slider.setMaxValue(row.maxValue);
  slider.setDoubleValue(row.given);
  EXPECT_EQ(slider.doubleValue(), row.expected);
  EXPECT_EQ(slider.integerValue(), row.integer);
}

INSTANTIATE_TEST_SUITE_P(
    , ASliderOfSomeRange,
    testing::Values(ValueRow{"Inside", 0, 100, 37, 37, 37},
                    ValueRow{"CutOffNotRounded", 0, 100, 2.9, 2.9, 2},
                    ValueRow{"CutOffTowardsZero", -5, 5, -2.9, -2.9, -2},
                    ValueRow{"Above", 0, 100, 101, 100, 100}, ValueRow{"Below", 0, 100, -1, 0, 0},
                    ValueRow{"Infinite", 0, 100, infinity, 100, 100},
                    ValueRow{"MinusInfinite", 10, 100, -infinity, 10, 10},
                    ValueRow{"NotANumber", 10, 100, notANumber, 10, 10},
                    ValueRow{"EndsTheWrongWayRound", 10, 5, 20, 10, 10},
                    ValueRow{"BeyondIntegers", 0, 1e300, 1e19, 1e19, Integers::max()},
                    ValueRow{"BelowIntegers", -1e300, 0, -1e19, -1e19, Integers::min()}),
    rowName);

TEST(ASlider, TakesTheLargestAndSmallestIntegers) {
  NSSlider slider;
  slider.setMaxValue(100);
  slider.setIntegerValue(Integers::max());
  EXPECT_EQ(slider.integerValue(), 100);
  slider.setIntegerValue(Integers::min());
  EXPECT_EQ(slider.integerValue(), 0);
}

TEST(ASlider, MovesItsValueIntoANewRange) {
  NSSlider slider;
  slider.setMaxValue(100);
  slider.setDoubleValue(80);
  slider.setMaxValue(50);
  EXPECT_EQ(slider.doubleValue(), 50);
  slider.setMaxValue(notANumber);
  EXPECT_EQ(slider.maxValue(), 50);
  slider.setMaxValue(100);
  slider.setMinValue(60);
  EXPECT_EQ(slider.doubleValue(), 60);
}

TEST(AProgressIndicator, KeepsAValueThatItsRangeReachesLater) {
  NSProgressIndicator bar;
  bar.setDoubleValue(150);
  EXPECT_EQ(bar.fraction(), 1);
  bar.setMaxValue(300);
  EXPECT_EQ(bar.doubleValue(), 150);
  EXPECT_EQ(bar.fraction(), 0.5);
}

TEST(AProgressIndicator, DrawsAFractionOfAnyRange) {
  NSProgressIndicator bar;
  bar.setDoubleValue(notANumber);
  EXPECT_EQ(bar.doubleValue(), 0);
  bar.setDoubleValue(-1);
  EXPECT_EQ(bar.fraction(), 0);
  bar.setDoubleValue(infinity);
  bar.setMaxValue(infinity);
  EXPECT_EQ(bar.fraction(), 1);
  bar.setMinValue(-infinity);
  bar.setDoubleValue(0);
  EXPECT_EQ(bar.fraction(), 0.5);
  bar.setMinValue(0);
  bar.setMaxValue(0);
  EXPECT_EQ(bar.fraction(), 0);
}

struct ChangeRow {
  const char* name;
  std::function<std::shared_ptr<NSView>()> make;
  std::function<void(NSView&)> change;
};

template <class Control>
ChangeRow changeOf(const char* name, std::function<void(Control&)> change) {
  return {.name = name,
          .make = [] { return std::make_shared<Control>(); },
          .change = [change](NSView& view) { change(dynamic_cast<Control&>(view)); }};
}

class AControlThatIsChanged : public testing::TestWithParam<ChangeRow> {};

TEST_P(AControlThatIsChanged, IsMarkedForDisplayByTheFirstChangeOnly) {
  const auto view = GetParam().make();
  EXPECT_TRUE(view->needsDisplay());
  for (const bool expected : {true, false}) {
    view->setNeedsDisplay(false);
    GetParam().change(*view);
    EXPECT_EQ(view->needsDisplay(), expected);
  }
}

const auto picture = std::make_shared<const NSImage>();

INSTANTIATE_TEST_SUITE_P(
    , AControlThatIsChanged,
    testing::Values(
        changeOf<NSTextField>("Text", [](auto& field) { field.setStringValue("♫"); }),
        changeOf<NSButton>("Title", [](auto& button) { button.setTitle("▶"); }),
        changeOf<NSButton>("Enabled", [](auto& button) { button.setEnabled(false); }),
        changeOf<NSView>("Hidden", [](auto& view) { view.setHidden(true); }),
        changeOf<NSView>("Frame", [](auto& view) { view.setFrame(NSMakeRect(1, 0, 0, 0)); }),
        changeOf<NSImageView>("Image", [](auto& view) { view.setImage(picture); }),
        changeOf<NSSlider>("SliderValue", [](auto& slider) { slider.setIntegerValue(1); }),
        changeOf<NSSlider>("SliderRange", [](auto& slider) { slider.setMaxValue(100); }),
        changeOf<NSProgressIndicator>("BarValue", [](auto& bar) { bar.setDoubleValue(5); }),
        changeOf<NSProgressIndicator>("BarRange", [](auto& bar) { bar.setMaxValue(5); })),
    rowName);

TEST(ALevelIndicator, IsMarkedForDisplayWhenItsCellChanges) {
  const auto indicator = std::make_shared<NSLevelIndicator>();
  const auto cell = NSLevelIndicatorCell::initWithLevelIndicatorStyle(NSRatingLevelIndicatorStyle);
  indicator->setCell(cell);
  indicator->setNeedsDisplay(false);
  cell->setHighlighted(false);
  EXPECT_FALSE(indicator->needsDisplay());
  cell->setHighlighted(true);
  EXPECT_TRUE(indicator->needsDisplay());
}

TEST(ALevelIndicatorCell, IsNullForAStyleThatThePlatformDoesNotHave) {
  EXPECT_EQ(NSLevelIndicatorCell::initWithLevelIndicatorStyle(NSLevelIndicatorStyle{4}), nullptr);
}

TEST(ALevelIndicatorOfAnInterfaceFile, TakesItsRangeAndValueFromItsCell) {
  const FixedTextMeasurer measurer;
  const FixedFontFinder fonts;
  NSCoder coder("Some.xib:1", measurer, fonts);
  auto& cell = coder.encodeChild("cell", "Some.xib:2");
  cell.encodeString("maxValue", "5");
  cell.encodeString("doubleValue", "9");
  const NSLevelIndicator indicator(coder);
  EXPECT_EQ(indicator.integerValue(), 5);
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

TEST(ATextFieldOfAnInterfaceFile, FallsBackWhereAFontIsMissingAndRefusesUnknownWords) {
  const FixedTextMeasurer measurer;
  const FixedFontFinder fonts{"Installed"};
  NSCoder coder("Some.xib:1", measurer, fonts);
  auto& font = coder.encodeChild("font", "Some.xib:2");
  font.encodeString("name", "Installed");
  font.encodeString("size", "15");
  EXPECT_EQ(NSTextField(coder).font()->pointSize(), 15);
  font.encodeString("name", "Missing");
  EXPECT_EQ(NSTextField(coder).font(), nullptr);
  coder.encodeString("alignment", "centre");
  EXPECT_THROW(NSTextField{coder}, std::runtime_error);
}

}  // namespace
