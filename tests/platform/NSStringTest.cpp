#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/foundation/NSString.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

namespace {

TEST(TwoTexts, AreEqualUpToNormalizationAlone) {
  const auto equal = [](const std::string& left, const std::string& right) {
    EXPECT_EQ(NSString::isEqualToString(left, right), NSString::isEqualToString(right, left));
    return NSString::isEqualToString(left, right);
  };
  EXPECT_TRUE(equal("playing", "playing"));
  EXPECT_TRUE(equal("", ""));
  EXPECT_TRUE(equal("Caf\u00e9", "Cafe\u0301"));
  EXPECT_TRUE(equal("q\u0307\u0323", "q\u0323\u0307"));
  EXPECT_TRUE(equal("\uac00", "\u1100\u1161"));
  EXPECT_TRUE(equal("a\u037e", "a;"));  // a Greek question mark
  EXPECT_FALSE(equal("Playing", "playing"));
  EXPECT_FALSE(equal("Cafe", "Caf\u00e9"));
  EXPECT_FALSE(equal("\ufb01", "fi"));  // a ligature, which is compatible only
  EXPECT_FALSE(equal("", "\u0301"));
  EXPECT_FALSE(equal(std::string("a\0b", 3), std::string("a\0c", 3)));
}

TEST(Lowercase, IsFullAndTheSameInEveryLocale) {
  EXPECT_EQ(NSString::lowercaseString("[INSTRUMENTAL] 9"), "[instrumental] 9");
  EXPECT_EQ(NSString::lowercaseString("\u00c5NGSTR\u00d6M"), "\u00e5ngstr\u00f6m");
  EXPECT_EQ(NSString::lowercaseString("\u0130"), "i\u0307");
  EXPECT_EQ(NSString::lowercaseString("\u039f\u03a3"), "\u03bf\u03c2");  // a final sigma
  EXPECT_EQ(NSString::lowercaseString("I\u00c9"), "i\u00e9");
}

TEST(TheNumberAtAStart, IsReadWhateverFollows) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::vector<std::pair<const char*, double>> rows{{"215.5", 215.5},
                                                         {"-0", -0.0},
                                                         {"+7", 7},
                                                         {"12.345 s", 12.345},
                                                         {".5", 0.5},
                                                         {"5.", 5},
                                                         {"-.5e1x", -5},
                                                         {"2E-2", 0.02},
                                                         {"1e", 1},
                                                         {"1e+", 1},
                                                         {"1,5", 1},
                                                         {"1.2.3", 1.2},
                                                         {"0x1p4", 0},
                                                         {"1e999", infinity},
                                                         {"-1e999", -infinity},
                                                         {"1e-999", 0},
                                                         {" \t\r\n\v\f6", 6},
                                                         {"\u00a0\u2003\u30004", 4},
                                                         {"4.9e-324", 4.9e-324}};
  for (const auto& [text, number] : rows) {
    const double value = NSString::doubleValue(text);
    EXPECT_EQ(value, number) << text;
    EXPECT_EQ(std::signbit(value), std::signbit(number)) << text;
  }
  EXPECT_EQ(NSString::doubleValue("1e99999999999999999999"), infinity);
  EXPECT_EQ(NSString::doubleValue("9007199254740993"), 9007199254740992.0);
  EXPECT_EQ(NSString::doubleValue(std::string(400, '0') + "1.5"), 1.5);
}

TEST(TheNumberAtAStart, IsZeroWhereThereIsNone) {
  for (const char* text :
       {"", "   ", "abc", ".", "- 5", "+-5", "e5", "\u0665", "\xff\xfe", "Infinity", "-nan"}) {
    EXPECT_EQ(NSString::doubleValue(text), 0) << text;
  }
}

TEST(NumbersInALocaleWithCommas, AreStillReadWithAFullStop) {
  const Corvella::TemporaryFolder folder;
  const auto characters =
      folder.write("characters", "CHARMAP\n<U0000>..<U007F> /x00 ASCII\nEND CHARMAP\n");
  const auto commas = folder.write("commas",
                                   "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\n"
                                   "grouping -1\nEND LC_NUMERIC\n");
  // Made although it says nothing of days, money and the rest.
  Corvella::Process localedef({"localedef", "--force", "-f", characters.string(), "-i",
                               commas.string(), (folder.path() / "test").string()});
  localedef.wait();
  ASSERT_EQ(setenv("LOCPATH", folder.path().c_str(), 1), 0);
  ASSERT_NE(std::setlocale(LC_NUMERIC, "test"), nullptr) << localedef.errors();
  ASSERT_EQ(std::strtod("1,5", nullptr), 1.5);
  EXPECT_EQ(NSString::doubleValue("1.5"), 1.5);
  EXPECT_EQ(NSString::doubleValue("1,5"), 1.0);
  std::setlocale(LC_ALL, "C");
}

}  // namespace
