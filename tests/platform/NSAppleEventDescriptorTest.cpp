#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/foundation/NSAppleEventDescriptor.h"
#include "platform/foundation/NSAppleScript.h"

namespace {

using Descriptor = NSAppleEventDescriptor;
using std::chrono::microseconds;

using Number = std::numeric_limits<std::int32_t>;

const auto text = &Descriptor::descriptorWithString;
const auto real = &Descriptor::descriptorWithReal;

struct ValueRow {
  Descriptor value;
  std::optional<std::string> text;
  std::int32_t number;
};

TEST(ADescriptor, ReadsAsTextAndAsNumber) {
  const std::vector<ValueRow> rows{
      {Descriptor::nullDescriptor(), {}, 0},
      {Descriptor::descriptorWithInt32(-7), "-7", -7},
      {Descriptor::descriptorWithBoolean(true), "true", 1},
      {Descriptor::listDescriptor({text("3")}), {}, 0},
      {Descriptor::descriptorWithData({std::byte(65)}), {}, 0},
      {text("-2.6"), "-2.6", -3},
      {text("99999999999"), "99999999999", Number::max()},
      {text("60 stars"), "60 stars", 0},
      {text("inf"), "inf", 0},
      {text(""), "", 0},
      {real(microseconds(12'345'011)), "12.345011", 12},
      {real(std::chrono::seconds(215)), "215.0", 215},
      {real(microseconds(1)), "0.000001", 0},
      {real(microseconds(2'500'000)), "2.5", 3},
      {real(microseconds(-30'000)), "-0.03", 0},
      {real(microseconds::max()), "9223372036854.775807", Number::max()},
      {real(microseconds::min()), "-9223372036854.775808", Number::min()}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.value.stringValue(), row.text);
    EXPECT_EQ(row.value.int32Value(), row.number) << row.text.value_or("no text");
  }
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
