#include <chrono>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/foundation/NSAppleEventDescriptor.h"
#include "platform/foundation/NSAppleScript.h"
#include "platform/foundation/NSString.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;
using Descriptor = NSAppleEventDescriptor;

TEST(TwoTexts, AreEqualUpToNormalizationAlone) {
  const auto equal = [](const std::string& left, const std::string& right) {
    EXPECT_EQ(NSString::isEqualToString(left, right), NSString::isEqualToString(right, left));
    return NSString::isEqualToString(left, right);
  };
  EXPECT_TRUE(equal("playing", "playing"));
  EXPECT_TRUE(equal("q\u0307\u0323", "q\u0323\u0307"));
  EXPECT_TRUE(equal("a\u037e", "a;"));  // a Greek question mark
  EXPECT_FALSE(equal("Playing", "playing"));
  EXPECT_FALSE(equal("\ufb01", "fi"));  // a ligature, which is compatible only
  EXPECT_FALSE(equal("", "\u0301"));
  EXPECT_FALSE(equal(std::string("a\0b", 3), std::string("a\0c", 3)));
}

TEST(Lowercase, IsFullAndTheSameInEveryLocale) {
  EXPECT_EQ(NSString::lowercaseString("[INSTRUMENTAL] AZ@ 9"), "[instrumental] az@ 9");
  EXPECT_EQ(NSString::lowercaseString("I\u00c9\u0130"), "i\u00e9i\u0307");
}

TEST(TheNumberAtAStart, IsReadWhateverFollows) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::vector<std::pair<const char*, double>> rows{
      {"215.5", 215.5},     {"-0", -0.0},         {"+7", 7},
      {"12.345 s", 12.345}, {".5", 0.5},          {"5.", 5},
      {"-.5e1x", -5},       {"2E-2", 0.02},       {"1e", 1},
      {"1e+", 1},           {"1,5", 1},           {"1.2.3", 1.2},
      {"0x1p4", 0},         {"1e999", infinity},  {"-1e999", -infinity},
      {" \t\r\n\v\f6", 6},  {"\u00a0\u30004", 4}, {"", 0},
      {"   ", 0},           {"abc", 0},           {".", 0},
      {"- 5", 0},           {"+-5", 0},           {"e5", 0},
      {"\u0665", 0},        {"\xff\xfe", 0},      {"Infinity", 0},
      {"-nan", 0}};
  for (const auto& [text, number] : rows) {
    const double value = NSString::doubleValue(text);
    EXPECT_EQ(value, number) << text;
    EXPECT_EQ(std::signbit(value), std::signbit(number)) << text;
  }
  EXPECT_EQ(NSString::doubleValue(std::string(400, '0') + "1.5"), 1.5);
}

TEST(NumbersInALocaleWithCommas, AreStillReadWithAFullStop) {
  const Corvella::TemporaryFolder folder;
  folder.write("ascii", "CHARMAP\n<U0000>..<U007F> /x00 ASCII\nEND CHARMAP\n");
  folder.write("commas", "LC_NUMERIC\ndecimal_point \",\"\nEND LC_NUMERIC\n");
  // Made although it says nothing of days, money and the rest.
  Corvella::Process localedef({"localedef", "--force", "-f", folder.path() / "ascii", "-i",
                               folder.path() / "commas", folder.path() / "test"});
  localedef.wait();
  ASSERT_EQ(setenv("LOCPATH", folder.path().c_str(), 1), 0);
  ASSERT_NE(std::setlocale(LC_NUMERIC, "test"), nullptr) << localedef.errors();
  ASSERT_EQ(std::strtod("1,5", nullptr), 1.5);
  EXPECT_EQ(NSString::doubleValue("1.5"), 1.5);
  EXPECT_EQ(NSString::doubleValue("1,5"), 1.0);
  std::setlocale(LC_ALL, "C");
}

struct ValueRow {
  Descriptor value;
  std::optional<std::string> text;
  std::int32_t number;
};

TEST(ADescriptor, ReadsAsTextAndAsNumber) {
  using Number = std::numeric_limits<std::int32_t>;
  const auto text = &Descriptor::descriptorWithString;
  const auto real = &Descriptor::descriptorWithReal;
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
      {real(12'345'011us), "12.345011", 12},
      {real(215s), "215.0", 215},
      {real(1us), "0.000001", 0},
      {real(2500ms), "2.5", 3},
      {real(-30ms), "-0.03", 0},
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
