#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/base/Utf8.h"
#include "players/mpris/track/TimedLyrics.h"

namespace Corvella {
namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

TEST(AStampedText, IsShownWithoutItsTimeStamps) {
  const Rows rows{
      {"[00:12]A\n[00:12.34]B\n[00:12.345]C\n[00:12:34]D\n[123:59.99]E\n", "A\nB\nC\nD\nE\n"},
      {"[00:01.00][00:09.00] [00:17.00]Refrain", "Refrain"},
      {"  [00:01.00]  One two ", "One two "},
      {"[ti:x]\r\n[00:01]One\r\n[00:02]\r[00:03]Two", "One\r\n\rTwo"},
      {"\xEF\xBB\xBF[00:01]One", "One"},
      {"[00:01.00] <00:01.00> One <00:01.50> two<00:02.00>fold <00:02.50>", "One twofold"},
      {"<00:01.00>One <00:01.500>two", "One two"},
      {"[ar:A]\n[TI: B ] \n[offset:+100]\n\n[00:01]One", "\nOne"},
      {"[id:1]\n[hash:f]\n[la:en]\n[qq:1]\n[total:9]\n[ve:2]\n[00:01]One", "One"},
      {"[Chorus]\n[Verse 1: A]\n[instrumental]\n[00:01]One",
       "[Chorus]\n[Verse 1: A]\n[instrumental]\nOne"},
      {"[00:01]Meet me at [12:30] <sharp>", "Meet me at [12:30] <sharp>"},
      {"[00:01]One\n[0:1]\n[00:02\n[:02]\n[1234:00]\n[00:02.]\n[00:02.1234]",
       "One\n[0:1]\n[00:02\n[:02]\n[1234:00]\n[00:02.]\n[00:02.1234]"}};
  for (const auto& [given, shown] : rows) EXPECT_EQ(withoutTimeStamps(given), shown);
}

TEST(AnUnstampedText, IsShownAsItIs) {
  for (const char* text :
       {"[Chorus]\r\n [instrumental]\r\rLa \n", "[ar:Nobody]\n[length: 3:00]\nLa",
        "From <10:30>\nto [11:30]", "\xFF[\xEF\xBB", ""}) {
    EXPECT_EQ(withoutTimeStamps(text), text);
  }
}

TEST(AHugeText, IsShownInLinearTime) {
  std::string text = "[00:01]One\n";
  for (const char* part : {"<", "[", "[00:0", "<00:01.0", "\r", " "}) {
    for (int index = 0; index < 200'000; ++index) text += part;
  }
  EXPECT_EQ(withoutTimeStamps(text).size(), text.size() - std::string("[00:01]").size());
}

TEST(ALyricsFile, IsReadAsUtf8) {
  const Rows rows{{"Größe ♫ 🎵", "Größe ♫ 🎵"},
                  {"\xEF\xBB\xBFgrün", "grün"},
                  {"gr\xFCn \x80", "grün \u0080"},
                  {std::string("\xFF\xFEg\0\xFC\0\x3C\xD8\xB5\xDF", 10), "gü🎵"},
                  {std::string("\xFE\xFF\0g\0\xFC\xD8\x3C\xDF\xB5\0", 11), "gü🎵\uFFFD"},
                  {std::string("\xFE\xFF\xDF\xB5\0a", 6), "\uFFFDa"},
                  {"", ""}};
  for (const auto& [bytes, text] : rows) {
    EXPECT_EQ(textOfFile(std::as_bytes(std::span(bytes))), text);
  }
}

}  // namespace
}  // namespace Corvella
