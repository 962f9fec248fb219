#include <chrono>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "platform/foundation/NSAppleEventDescriptor.h"
#include "platform/foundation/NSAppleScript.h"
#include "tests/support/RowName.h"

namespace {

using Descriptor = NSAppleEventDescriptor;
using std::chrono::microseconds;

struct ValueRow {
  std::string name;
  Descriptor value;
  std::optional<std::string> text;
  std::int32_t number;
};

class ADescriptor : public testing::TestWithParam<ValueRow> {};

TEST_P(ADescriptor, ReadsAsTextAndAsNumber) {
  EXPECT_EQ(GetParam().value.stringValue(), GetParam().text);
  EXPECT_EQ(GetParam().value.int32Value(), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, ADescriptor,
    testing::Values(
        ValueRow{"Null", Descriptor::nullDescriptor(), {}, 0},
        ValueRow{"Integer", Descriptor::descriptorWithInt32(-7), "-7", -7},
        ValueRow{"True", Descriptor::descriptorWithBoolean(true), "true", 1},
        ValueRow{"List", Descriptor::listDescriptor({Descriptor::descriptorWithInt32(3)}), {}, 0},
        ValueRow{"Data", Descriptor::descriptorWithData({std::byte(65)}), {}, 0},
        ValueRow{"Text", Descriptor::descriptorWithString("60"), "60", 60},
        ValueRow{"TextRounded", Descriptor::descriptorWithString("-2.6"), "-2.6", -3},
        ValueRow{"TextTooLarge", Descriptor::descriptorWithString("99999999999"), "99999999999",
                 std::numeric_limits<std::int32_t>::max()},
        ValueRow{"TextNoNumber", Descriptor::descriptorWithString("60 stars"), "60 stars", 0},
        ValueRow{"TextInfinity", Descriptor::descriptorWithString("inf"), "inf", 0},
        ValueRow{"TextEmpty", Descriptor::descriptorWithString(""), "", 0},
        ValueRow{"RealExact", Descriptor::descriptorWithReal(microseconds(12'345'011)), "12.345011",
                 12},
        ValueRow{"RealWhole", Descriptor::descriptorWithReal(std::chrono::seconds(215)), "215.0",
                 215},
        ValueRow{"RealTiny", Descriptor::descriptorWithReal(microseconds(1)), "0.000001", 0},
        ValueRow{"RealHalf", Descriptor::descriptorWithReal(microseconds(2'500'000)), "2.5", 3},
        ValueRow{"RealNegative", Descriptor::descriptorWithReal(microseconds(-30'000)), "-0.03", 0},
        ValueRow{"RealLongest", Descriptor::descriptorWithReal(microseconds::max()),
                 "9223372036854.775807", std::numeric_limits<std::int32_t>::max()},
        ValueRow{"RealLowest", Descriptor::descriptorWithReal(microseconds::min()),
                 "-9223372036854.775808", std::numeric_limits<std::int32_t>::min()}),
    rowName);

TEST(AListDescriptor, CountsItsItemsFromOne) {
  const auto list = Descriptor::listDescriptor(
      {Descriptor::descriptorWithInt32(10), Descriptor::descriptorWithInt32(20)});
  EXPECT_EQ(list.descriptorAtIndex(0), nullptr);
  ASSERT_NE(list.descriptorAtIndex(2), nullptr);
  EXPECT_EQ(list.descriptorAtIndex(1)->int32Value(), 10);
  EXPECT_EQ(list.descriptorAtIndex(3), nullptr);
  EXPECT_EQ(Descriptor::descriptorWithInt32(1).descriptorAtIndex(1), nullptr);
}

TEST(ErrorInformation, IsOneLineWhateverItHolds) {
  const NSAppleScriptErrorInformation error{
      .number = -600, .message = "a\nb", .briefMessage = "\"q\"\\\x7f", .appName = "Plåyer"};
  EXPECT_EQ(error.description(),
            "{NSAppleScriptErrorAppName = \"Plåyer\"; "
            "NSAppleScriptErrorBriefMessage = \"\\\"q\\\"\\\\\\x7f\"; "
            "NSAppleScriptErrorMessage = \"a\\x0ab\"; NSAppleScriptErrorNumber = -600;}");
}

}  // namespace
