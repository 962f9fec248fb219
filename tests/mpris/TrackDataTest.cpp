#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/base/Utf8.h"
#include "players/mpris/artwork/DataUrl.h"
#include "players/mpris/track/FileUrl.h"
#include "players/mpris/track/TimedLyrics.h"
#include "players/mpris/track/TrackMetadata.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;

using Rows = std::vector<std::pair<std::string, std::string>>;

TEST(ADataAddress, HoldsTheseBytes) {
  for (const auto& [url, bytes] : Rows{{"data:image/png;base64,QUJD", "ABC"},
                                       {"data:image/png;base64,QUI=", "AB"},
                                       {"data:;base64,QQ==", "A"},
                                       {"data:image/png;base64,QUJDRA", "ABCD"},  // no padding
                                       {"data:;base64,+/+/", "\xFB\xFF\xBF"},
                                       {"data:image/png;name=a.png;base64,QUJD", "ABC"},
                                       {"DATA:image/PNG;BASE64,QUJD", "ABC"},
                                       {"data:image/png; base64, QU\r\n\tJ D ", "ABC"},
                                       {"data:;base64,QUI%3D%0A", "AB"},
                                       {"data:;base64,", ""},
                                       {"data:image/png,%89PNG%0d%0A", "\x89PNG\r\n"},
                                       {"data:,a%00b", std::string("a\0b", 3)},
                                       {"data:text/plain,a, b", "a, b"},
                                       {"data:base64,QUJD", "QUJD"}}) {  // no semicolon
    EXPECT_EQ(textOf(bytesOfDataUrl(url)), bytes) << url;
  }
}

TEST(ADataAddress, HoldsNothingWhereItIsMalformed) {
  for (const auto* url : {"data:;base64,QUJDR", "data:;base64,QU-D", "data:;base64,QUJ\xC3\xA9",
                          "data:;base64,QQ==QUJD", "data:;base64,====", "data:;base64,QUJD=",
                          "data:,%8", "data:,%zz", "data:image/png;base64", "date:,A"}) {
    EXPECT_EQ(bytesOfDataUrl(url), std::nullopt) << url;
  }
}

TEST(AFileAddress, MeansThesePathsInThisOrder) {
  const std::vector<std::pair<std::string, std::vector<std::filesystem::path>>> rows{
      {"file:///music/a.mp3", {"/music/a.mp3"}},
      {"FILE:/music/a.mp3", {"/music/a.mp3"}},
      {"file://LocalHost/music/a.mp3", {"/music/a.mp3"}},
      {"file:///a%231.mp3", {"/a#1.mp3", "/a%231.mp3"}},
      {"file:///a #1?.mp3", {"/a #1?.mp3"}},
      {"file:///100%.mp3%4g", {"/100%.mp3%4g"}},
      {"file:///1%2", {"/1%2"}},
      {"file:///%41%zz", {"/A%zz", "/%41%zz"}},
      {"file:///%e2%99%AB", {"/♫", "/%e2%99%AB"}},
      {"file:///a%2523", {"/a%23", "/a%2523"}},
      {"file:///a%00b", {"/a%00b"}},
      {std::string("file:///a\0b", 11), {}},
      {"/music/a%20b#1", {"/music/a%20b#1"}},
      // Another host or another scheme:
      {"file://nas/a.mp3", {}},
      {"file:a.mp3", {}},
      {"file://localhost", {}},
      {"file:", {}},
      {"http://localhost/a.mp3", {}},
      {"files:///a.mp3", {}},
      {"", {}}};
  for (const auto& [url, paths] : rows) EXPECT_EQ(pathsOfFileUrl(url), paths) << url;
}

TEST(AnUntitledAddress, IsCalledByItsLastComponent) {
  for (const auto& [url, name] : Rows{{"file:///m/So%20%231.mp3", "So #1.mp3"},
                                      {"file:///m/100% #1?.mp3", "100% #1?.mp3"},
                                      {"/m/a: b/c.mp3", "c.mp3"},
                                      {"file:///m/AC%2FDC", "AC/DC"},
                                      {"file:///m/album//", "album"},
                                      {"https://host/live/radio.ogg?key=1/2#x", "radio.ogg"},
                                      {"http://host:8000/", "host:8000"},
                                      {"cdda:2", "cdda:2"},
                                      {"file:///", ""},
                                      {"", ""},
                                      {"file:///m/Gr%f6%DFe %F0%9F%8E%B5", "Gr\uFFFD\uFFFDe 🎵"}}) {
    EXPECT_EQ(baseNameOfUrl(url), name) << url;
  }
}

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

constexpr auto kMonth = microseconds(24h * 31).count();

using Text = std::string;
using Texts = std::vector<std::string>;

TrackMetadata metadataOf(std::vector<Property> entries) {
  const PropertyValue metadata{PropertyMap(std::move(entries))};
  return readTrackMetadata(&metadata);
}

struct TimeRow {
  PropertyValue value;
  std::optional<microseconds> length;
  std::optional<microseconds> position;
};

TEST(ATime, CountsWhenItCanBeOneAndIsNeverNegative) {
  // A negative number, a huge one, and one of months are no lengths, whatever their type.
  const std::vector<TimeRow> rows{{{INT64_C(60'029'388)}, 60'029'388us, 60'029'388us},
                                  {{UINT64_C(5)}, 5us, 5us},
                                  {{2.5e6}, 2'500'000us, 2'500'000us},
                                  {{INT64_C(0)}, {}, 0us},
                                  {{INT64_C(-1)}, {}, 0us},
                                  {{-3.0}, {}, 0us},
                                  {{UINT64_MAX}, {}, 0us},
                                  {{INT64_MAX}, {}, microseconds::max()},
                                  {{kMonth}, {}, microseconds(kMonth)},
                                  {{NAN}, {}, {}},
                                  {{INFINITY}, {}, {}},
                                  {{1e300}, {}, 9223372036854774784us},
                                  {{Text("60000000")}, {}, {}},
                                  {{}, {}, {}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows.data());
    EXPECT_EQ(metadataOf({{"mpris:length", row.value}}).length, row.length);
    EXPECT_EQ(positionOf(&row.value), row.position);
  }
}

TEST(AVolume, IsRoundedToTheScaleAndFullWhereThereIsNone) {
  const std::vector<std::pair<PropertyValue, int>> rows{
      {{0.33299}, 33}, {{3.0}, 100},       {{-1.0}, 0},        {{0.004}, 0},
      {{NAN}, 100},    {{Text("x")}, 100}, {{INT64_C(1)}, 100}};
  for (const auto& [said, volume] : rows) EXPECT_EQ(volumeOf(&said), volume);
  EXPECT_EQ(volumeOf(nullptr), 100);
}

TEST(ARating, IsBroughtToPointsFromTheScaleItIsOn) {
  const std::vector<std::pair<double, int>> rows{{0, 0},    {0.8, 80},   {1, 100}, {2, 40},
                                                 {4.5, 90}, {5, 100},    {7, 70},  {10, 100},
                                                 {80, 80},  {1000, 100}, {-1, 0}};
  for (const auto& [rating, points] : rows) EXPECT_EQ(ratingPoints(rating), points) << rating;
}

TEST(AState, IsKnownInAnyCaseAndOtherwiseStopped) {
  using enum PlayerState;
  for (const auto& [text, state] : {std::pair("Playing", Playing),
                                    {"PAUSED", Paused},
                                    {"stopped", Stopped},
                                    {"Buffering", Stopped}}) {
    const PropertyValue status{text};
    EXPECT_EQ(stateOf(&status), state) << text;
  }
  EXPECT_EQ(stateOf(nullptr), Stopped);
}

TEST(ATrack, TakesItsTextsFromWhateverTypeAPlayerSends) {
  const auto track = metadataOf({{"xesam:title", {INT64_C(1999)}},
                                 {"xesam:artist", {Texts{"", "One", "Two"}}},
                                 {"xesam:album", {UINT64_C(7)}},
                                 {"xesam:userRating", {INT64_C(4)}},
                                 {"mpris:artUrl", {1.0}}});
  EXPECT_EQ(track.title, "1999");
  EXPECT_EQ(track.artist, "One, Two");
  EXPECT_EQ(track.album, "7");
  EXPECT_EQ(track.userRating, 4.0);
  EXPECT_EQ(track.artUrl, "");

  EXPECT_EQ(metadataOf({{"xesam:artist", {Text("Alone")}}}).artist, "Alone");
  const PropertyValue noArtist{Texts{""}};
  EXPECT_EQ(metadataOf({{"xesam:artist", noArtist}, {"xesam:albumArtist", {Texts{"Band"}}}}).artist,
            "Band");
}

}  // namespace
}  // namespace Corvella
