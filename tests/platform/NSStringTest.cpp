#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "platform/foundation/NSString.h"
#include "tests/support/Process.h"
#include "tests/support/RowName.h"
#include "tests/support/TemporaryFolder.h"

namespace {

struct EqualityRow {
  std::string name;
  std::string left;
  std::string right;
  bool equal;
};

class TwoTexts : public testing::TestWithParam<EqualityRow> {};

TEST_P(TwoTexts, AreEqualUpToNormalizationAlone) {
  const auto& row = GetParam();
  EXPECT_EQ(NSString::isEqualToString(row.left, row.right), row.equal);
  EXPECT_EQ(NSString::isEqualToString(row.right, row.left), row.equal);
}

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, TwoTexts,
    testing::Values(EqualityRow{"Same", "playing", "playing", true},
                    EqualityRow{"Case", "Playing", "playing", false},
                    EqualityRow{"PrefixOnly", "play", "playing", false},
                    EqualityRow{"ComposedAndDecomposed", "Caf\u00e9", "Cafe\u0301", true},
                    EqualityRow{"OrderOfMarks", "q\u0307\u0323", "q\u0323\u0307", true},
                    EqualityRow{"Hangul", "\uac00", "\u1100\u1161", true},
                    EqualityRow{"KelvinSignAndAsciiK", "\u212a", "K", true},
                    EqualityRow{"GreekQuestionMarkAndSemicolon", "a\u037e", "a;", true},
                    EqualityRow{"CompatibilityIsNotEnough", "\ufb01", "fi", false},
                    EqualityRow{"FullWidth", "\uff21", "A", false},
                    EqualityRow{"AccentMatters", "Cafe", "Caf\u00e9", false},
                    EqualityRow{"ZeroBytes", std::string("a\0b", 3), std::string("a\0c", 3), false},
                    EqualityRow{"Empty", "", "", true},
                    EqualityRow{"EmptyOrNot", "", "\u0301", false}),
    rowName);

TEST(Lowercase, IsFullAndTheSameInEveryLocale) {
  EXPECT_EQ(NSString::lowercaseString("[INSTRUMENTAL] 9"), "[instrumental] 9");
  EXPECT_EQ(NSString::lowercaseString("\u00c5NGSTR\u00d6M"), "\u00e5ngstr\u00f6m");
  EXPECT_EQ(NSString::lowercaseString("\u0130"), "i\u0307");
  EXPECT_EQ(NSString::lowercaseString("\u039f\u03a3"), "\u03bf\u03c2");  // a final sigma
  EXPECT_EQ(NSString::lowercaseString("I\u00c9"), "i\u00e9");
}

struct NumberRow {
  std::string text;
  double value;
};

class TheNumberAtAStart : public testing::TestWithParam<NumberRow> {};

TEST_P(TheNumberAtAStart, IsReadAsDescribed) {
  const double value = NSString::doubleValue(GetParam().text);
  EXPECT_EQ(value, GetParam().value) << GetParam().text;
  EXPECT_EQ(std::signbit(value), std::signbit(GetParam().value)) << GetParam().text;
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Numbers, TheNumberAtAStart,
    testing::Values(NumberRow{"215.5", 215.5}, NumberRow{"0", 0.0}, NumberRow{"-0", -0.0},
                    NumberRow{"+7", 7}, NumberRow{"12.345011 seconds", 12.345011},
                    NumberRow{".5", 0.5}, NumberRow{"5.", 5}, NumberRow{"-.5e1x", -5},
                    NumberRow{"1e3", 1000}, NumberRow{"2E-2", 0.02}, NumberRow{"1e", 1},
                    NumberRow{"1e+", 1}, NumberRow{"1,5", 1}, NumberRow{"1 000", 1},
                    NumberRow{"1.2.3", 1.2}, NumberRow{" \t\r\n\v\f63.5", 63.5},
                    NumberRow{"\u00a0\u2003\u30004", 4}, NumberRow{"\u20034 \u2003", 4}));

INSTANTIATE_TEST_SUITE_P(NotNumbers, TheNumberAtAStart,
                         testing::Values(NumberRow{"", 0}, NumberRow{"   ", 0}, NumberRow{"abc", 0},
                                         NumberRow{".", 0}, NumberRow{"-", 0}, NumberRow{"- 5", 0},
                                         NumberRow{"+-5", 0}, NumberRow{"e5", 0},
                                         NumberRow{"\u0665", 0}, NumberRow{"\xff\xfe", 0}));

// What a parser of the C or C++ library takes for numbers, and this one does not, or the reverse.
INSTANTIATE_TEST_SUITE_P(
    LibraryTraps, TheNumberAtAStart,
    testing::Values(NumberRow{"inf", 0}, NumberRow{"Infinity", 0}, NumberRow{"-nan", 0},
                    NumberRow{"nan(1)", 0}, NumberRow{"0x1p4", 0}, NumberRow{"0X10", 0},
                    NumberRow{"1e999", kInfinity}, NumberRow{"-1e999", -kInfinity},
                    NumberRow{"1e-999", 0}, NumberRow{"1e99999999999999999999", kInfinity},
                    NumberRow{"4.9e-324", std::numeric_limits<double>::denorm_min()},
                    NumberRow{"9007199254740993", 9007199254740992.0},
                    NumberRow{std::string(400, '0') + "1.5", 1.5}));

TEST(NumbersInALocaleWithCommas, AreStillReadWithAFullStop) {
  const Corvella::TemporaryFolder folder;
  const auto made = folder.path() / "de_DE.UTF-8";
  Corvella::Process localedef({"localedef", "-i", "de_DE", "-f", "UTF-8", made.string()});
  ASSERT_EQ(localedef.wait(), 0) << localedef.errors();
  ASSERT_EQ(setenv("LOCPATH", folder.path().c_str(), 1), 0);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  ASSERT_EQ(std::strtod("1,5", nullptr), 1.5);
  EXPECT_EQ(NSString::doubleValue("1.5"), 1.5);
  EXPECT_EQ(NSString::doubleValue("1,5"), 1.0);
  std::setlocale(LC_ALL, "C");
}

}  // namespace
