#include <ostream>
#include <span>
#include <string>

#include <gtest/gtest.h>

#include "players/mpris/LyricsText.h"
#include "players/mpris/Utf8.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

struct Row {
  const char* name;
  std::string given;
  std::string shown;
};

void PrintTo(const Row& row, std::ostream* out) {
  *out << testing::PrintToString(row.given);
}

class AStampedText : public testing::TestWithParam<Row> {};

TEST_P(AStampedText, IsShownWithoutItsTimeStamps) {
  EXPECT_EQ(withoutTimeStamps(GetParam().given), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AStampedText,
    testing::Values(
        Row{"Seconds", "[00:12]One\n[01:02]Two\n", "One\nTwo\n"},
        Row{"Hundredths", "[00:12.34]One", "One"}, Row{"Thousandths", "[00:12.345]One", "One"},
        Row{"HundredthsBehindAColon", "[00:12:34]One", "One"},
        Row{"LongMinutes", "[123:59.99]One", "One"},
        Row{"Repeated", "[00:01.00][00:09.00] [00:17.00]Refrain", "Refrain"},
        Row{"BlanksAround", "  [00:01.00]  One two ", "One two "},
        Row{"WindowsLineEnds", "[ti:x]\r\n[00:01]One\r\n[00:02]\r\n", "One\r\n\r\n"},
        Row{"OldLineEnds", "[00:01]One\r[00:02]Two", "One\rTwo"},
        Row{"ByteOrderMark", "\xEF\xBB\xBF[00:01]One", "One"},
        Row{"Words", "[00:01.00] <00:01.00> One <00:01.50> two<00:02.00>fold <00:02.50>",
            "One twofold"},
        Row{"WordsWithoutLineStamps", "<00:01.00>One <00:01.500>two", "One two"},
        Row{"Description", "[ar:A]\n[TI: B ] \n[offset:+100]\n\n[00:01]One", "\nOne"},
        Row{"Headings", "[Chorus]\n[Verse 1: A]\n[instrumental]\n[00:01]One",
            "[Chorus]\n[Verse 1: A]\n[instrumental]\nOne"},
        Row{"StampInsideALine", "[00:01]Meet me at [12:30] <sharp>", "Meet me at [12:30] <sharp>"},
        Row{"BrokenStamps", "[00:01]One\n[0:1]\n[00:02\n[:02]\n[1234:00]\n[00:02.]\n[00:02.1234]",
            "One\n[0:1]\n[00:02\n[:02]\n[1234:00]\n[00:02.]\n[00:02.1234]"}),
    rowName);

class AnUnstampedText : public testing::TestWithParam<Row> {};

TEST_P(AnUnstampedText, IsShownAsItIs) {
  EXPECT_EQ(withoutTimeStamps(GetParam().given), GetParam().given);
}

INSTANTIATE_TEST_SUITE_P(Rows, AnUnstampedText,
                         testing::Values(Row{"Headings", "[Chorus]\r\n [instrumental]\r\rLa \n",
                                             ""},
                                         Row{"Description", "[ar:Nobody]\n[length: 3:00]\nLa", ""},
                                         Row{"TimesOfDay", "From <10:30>\nto [11:30]", ""},
                                         Row{"Invalid", "\xFF[\xEF\xBB", ""}, Row{"Empty", "", ""}),
                         rowName);

TEST(AHugeText, IsShownInLinearTime) {
  std::string text = "[00:01]One\n";
  for (const char* part : {"<", "[", "[00:0", "<00:01.0", "\r", " "}) {
    for (int index = 0; index < 200'000; ++index) text += part;
  }

  const auto shown = withoutTimeStamps(text);

  EXPECT_EQ(shown.size(), text.size() - std::string("[00:01]").size());
}

class ALyricsFile : public testing::TestWithParam<Row> {};

TEST_P(ALyricsFile, IsReadAsUtf8) {
  EXPECT_EQ(textOfFile(std::as_bytes(std::span(GetParam().given))), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Encodings, ALyricsFile,
    testing::Values(
        Row{"Utf8", "Größe ♫ 🎵", "Größe ♫ 🎵"}, Row{"Utf8WithMark", "\xEF\xBB\xBFgrün", "grün"},
        Row{"Latin1", "gr\xFCn \x80", "grün \u0080"},
        Row{"Utf16LittleEndian", std::string("\xFF\xFEg\0\xFC\0\x6B\x26\x3C\xD8\xB5\xDF", 12),
            "gü♫🎵"},
        Row{"Utf16BigEndian", std::string("\xFE\xFF\0g\0\xFC\x26\x6B\xD8\x3C\xDF\xB5", 12), "gü♫🎵"},
        Row{"LoneSurrogates", std::string("\xFE\xFF\xDF\xB5\0a\xD8\x3C", 8), "\uFFFDa\uFFFD"},
        Row{"TwoHighSurrogates", "\xFE\xFF\xD8\x3C\xD8\x3C\xDF\xB5", "\uFFFD🎵"},
        Row{"OddUtf16", std::string("\xFE\xFF\0a\0", 5), "a"}, Row{"Empty", "", ""}),
    rowName);

}  // namespace
}  // namespace Corvella
