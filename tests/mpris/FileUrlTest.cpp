#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "players/mpris/track/FileUrl.h"

namespace Corvella {
namespace {

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
      {"/music/a%20b#1", {"/music/a%20b#1"}}};
  for (const auto& [url, expected] : rows) EXPECT_EQ(pathsOfFileUrl(url), expected) << url;
}

TEST(AFileAddress, OfAnotherHostOrSchemeMeansNone) {
  for (const char* url : {"file://nas/a.mp3", "file:a.mp3", "file://localhost",
                          "file:", "http://localhost/a.mp3", "files:///a.mp3", ""}) {
    EXPECT_TRUE(pathsOfFileUrl(url).empty()) << url;
  }
}

TEST(AnUntitledAddress, IsCalledByItsLastComponent) {
  const std::vector<std::pair<std::string, std::string>> rows{
      {"file:///m/So%20%231.mp3", "So #1.mp3"},
      {"file:///m/100% #1?.mp3", "100% #1?.mp3"},
      {"/m/a: b/c.mp3", "c.mp3"},
      {"file:///m/AC%2FDC", "AC/DC"},
      {"file:///m/album//", "album"},
      {"https://host/live/radio.ogg?key=1/2#x", "radio.ogg"},
      {"http://host:8000/", "host:8000"},
      {"cdda:2", "cdda:2"},
      {"file:///", ""},
      {"", ""},
      {"file:///m/Gr%f6%DFe %F0%9F%8E%B5", "Gr\uFFFD\uFFFDe 🎵"}};
  for (const auto& [url, expected] : rows) EXPECT_EQ(baseNameOfUrl(url), expected) << url;
}

}  // namespace
}  // namespace Corvella
