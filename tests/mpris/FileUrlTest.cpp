#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "players/mpris/FileUrl.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

struct PathsRow {
  const char* name;
  std::string url;
  std::vector<std::filesystem::path> paths;
};

void PrintTo(const PathsRow& row, std::ostream* out) {
  *out << row.url;
}

class AFileAddress : public testing::TestWithParam<PathsRow> {};

TEST_P(AFileAddress, MeansThePathsInThisOrder) {
  EXPECT_EQ(pathsOfFileUrl(GetParam().url), GetParam().paths);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AFileAddress,
    testing::Values(PathsRow{"Plain", "file:///music/a.mp3", {"/music/a.mp3"}},
                    PathsRow{"OneSlash", "file:/music/a.mp3", {"/music/a.mp3"}},
                    PathsRow{"ThisHost", "file://LocalHost/music/a.mp3", {"/music/a.mp3"}},
                    PathsRow{"CapitalScheme", "FILE:///a.mp3", {"/a.mp3"}},
                    PathsRow{"EncodedSharp", "file:///a%231.mp3", {"/a#1.mp3", "/a%231.mp3"}},
                    PathsRow{"RawSharpAndQuery", "file:///a #1?.mp3", {"/a #1?.mp3"}},
                    PathsRow{"RawPercent", "file:///100%.mp3", {"/100%.mp3"}},
                    PathsRow{"RawPercentAtTheEnd", "file:///1%2", {"/1%2"}},
                    PathsRow{"NoDigits", "file:///%zz%4g.mp3", {"/%zz%4g.mp3"}},
                    PathsRow{"MixedEscapes", "file:///%41%zz", {"/A%zz", "/%41%zz"}},
                    PathsRow{"BytesBeyondAscii", "file:///%e2%99%AB", {"/♫", "/%e2%99%AB"}},
                    PathsRow{"DecodedOnce", "file:///a%2523", {"/a%23", "/a%2523"}},
                    PathsRow{"EncodedNul", "file:///a%00b", {"/a%00b"}},
                    PathsRow{"Nul", std::string("file:///a\0b", 11), {}},
                    PathsRow{"BarePath", "/music/a%20b#1", {"/music/a%20b#1"}},
                    PathsRow{"OtherHost", "file://nas/a.mp3", {}},
                    PathsRow{"RelativePath", "file:a.mp3", {}},
                    PathsRow{"HostAlone", "file://localhost", {}},
                    PathsRow{"SchemeAlone", "file:", {}},
                    PathsRow{"OtherScheme", "http://localhost/a.mp3", {}},
                    PathsRow{"LongerScheme", "files:///a.mp3", {}}, PathsRow{"Nothing", "", {}}),
    rowName);

struct BaseNameRow {
  const char* name;
  std::string url;
  std::string baseName;
};

void PrintTo(const BaseNameRow& row, std::ostream* out) {
  *out << row.url;
}

class AnUntitledAddress : public testing::TestWithParam<BaseNameRow> {};

TEST_P(AnUntitledAddress, IsCalledByItsLastComponent) {
  EXPECT_EQ(baseNameOfUrl(GetParam().url), GetParam().baseName);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AnUntitledAddress,
    testing::Values(BaseNameRow{"Encoded", "file:///m/So%20%231.mp3", "So #1.mp3"},
                    BaseNameRow{"Raw", "file:///m/100% #1?.mp3", "100% #1?.mp3"},
                    BaseNameRow{"BarePath", "/m/a: b/c.mp3", "c.mp3"},
                    BaseNameRow{"EncodedSlash", "file:///m/AC%2FDC", "AC/DC"},
                    BaseNameRow{"Folder", "file:///m/album//", "album"},
                    BaseNameRow{"Stream", "https://host/live/radio.ogg?key=1/2#x", "radio.ogg"},
                    BaseNameRow{"HostAlone", "http://host:8000/", "host:8000"},
                    BaseNameRow{"NoPath", "cdda:2", "cdda:2"},
                    BaseNameRow{"RootAlone", "file:///", ""}, BaseNameRow{"Nothing", "", ""},
                    BaseNameRow{"Latin1", "file:///m/Gr%f6%DFe", "Gr\uFFFD\uFFFDe"},
                    BaseNameRow{"Overlong", "file:///%C0%AF", "\uFFFD\uFFFD"},
                    BaseNameRow{"Surrogate", "file:///%ED%A0%80", "\uFFFD\uFFFD\uFFFD"},
                    BaseNameRow{"CutCharacter", "file:///a%F0%9F%8E", "a\uFFFD\uFFFD\uFFFD"},
                    BaseNameRow{"BeyondUnicode", "file:///%F4%90%80%80",
                                "\uFFFD\uFFFD\uFFFD\uFFFD"},
                    BaseNameRow{"FourBytes", "file:///%F0%9F%8E%B5", "🎵"}),
    rowName);

}  // namespace
}  // namespace Corvella
