#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "players/mpris/artwork/DataUrl.h"
#include "players/mpris/track/FileUrl.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

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

}  // namespace
}  // namespace Corvella
