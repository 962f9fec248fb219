#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FakePlayerOnTheBus.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

using Value = FakeMprisPlayer::Value;

struct MetadataRow {
  std::string name;
  Value metadata;
  std::string state;
  std::string title;
};

TEST_F(AFakePlayerOnTheBus, WithOddMetadataIsReadAllTheSame) {
  const std::string none = "No Song Playing";
  const std::vector<MetadataRow> rows{
      {"no dictionary", Value::text("nothing"), "stopped", none},
      {"another dictionary", Value::of("a{ss}", 0), "stopped", none},
      {"empty texts",
       Value::dictionary({{"xesam:title", Value::text("")}, {"xesam:url", Value::text("")}}),
       "stopped", none},
      {"a track id alone", Value::dictionary({{"mpris:trackid", Value::of("o", "/noplaylist")}}),
       "stopped", none},
      {"a length alone",
       Value::dictionary({{"mpris:length", Value::of("t", std::uint64_t{5'000'000})}}), "playing",
       none},
      {"a url and no title",
       Value::dictionary(
           {{"xesam:title", Value::text("")}, {"xesam:url", Value::text("http://radio/a%20b")}}),
       "playing", "a b"},
      {"strange entries around the title",
       Value::dictionary({{"a", Value::of("(i)", 1)},
                          {"b", Value::of("a{sv}", 1, "c", "as", 1, "d")},
                          {"e", Value::of("ay", 1, 1)},
                          {"f", Value::of("v", "v", "y", 2)},
                          {"xesam:title", Value::text("Found")},
                          {"z", Value::of("aao", 0)}}),
       "playing", "Found"}};
  for (const auto& row : rows) {
    fake_.set("Metadata", row.metadata);
    EXPECT_EQ(controller().playerState(), row.state) << row.name;     // Among all properties.
    EXPECT_EQ(controller().songInfo().title, row.title) << row.name;  // Alone.
  }
}

TEST_F(AFakePlayerOnTheBus, TellsItsLengthInAnyNumber) {
  const std::vector<std::pair<Value, std::string>> rows{
      {Value::of("y", 200), "0.0002"},
      {Value::of("n", 3000), "0.003"},
      {Value::of("q", 5000), "0.005"},
      {Value::of("i", 2'000'000), "2.0"},
      {Value::of("u", 4'000'000'000U), "4000.0"},
      {Value::of("x", std::int64_t{5'000'000'000}), "5000.0"},
      {Value::of("t", std::uint64_t{7'000'001}), "7.000001"},
      {Value::of("d", 1.5e6), "1.5"}};
  for (const auto& [length, finish] : rows) {
    fake_.set("Metadata",
              Value::dictionary({{"xesam:title", Value::text("T")}, {"mpris:length", length}}));
    EXPECT_EQ(controller().songInfo().finish, finish);
  }
}

TEST_F(AFakePlayerOnTheBus, IsRatedByItsRatingThenTheUsersThenTheFile) {
  const TemporaryFolder folder;
  const auto file = makeTrack(folder, {.lyrics = "", .rating = "0.2", .cover = ""}, "flac");
  std::map<std::string, Value> entries{{"xesam:title", Value::text("T")},
                                       {"xesam:url", Value::text(urlOf(file))}};
  const auto rating = [&] {
    fake_.set("Metadata", Value::dictionary(entries));
    return controller().songInfo().ratings;
  };
  EXPECT_EQ(rating(), 20);
  entries.emplace("xesam:userRating", Value::of("d", 0.4));
  EXPECT_EQ(rating(), 40);
  fake_.set("Rating", Value::of("d", 0.6));
  fake_.announce("Rating");
  EXPECT_TRUE(eventually([&] { return rating() == 60; }));
}

TEST_F(AFakePlayerOnTheBus, ShowsTheArtworkAndTheLyricsThatItTells) {
  constexpr auto gif = "data:image/gif;base64,R0lGODlhAQABAAAAADs=";
  fake_.set("Metadata", Value::dictionary({{"xesam:title", Value::text("T")},
                                           {"xesam:asText", Value::text("tra la")},
                                           {"mpris:artUrl", Value::text(gif)}}));
  const auto artwork = stack_->runner.run(std::string("tell app \"iTunes\" to ") + kArtwork);
  ASSERT_TRUE(artwork.result.has_value());
  EXPECT_EQ(artwork.result->data().size(), 14U);
  EXPECT_EQ(controller().songLyrics(), "tra la");
  EXPECT_EQ(controller().songInfo().lyrics, "tra la");

  fake_.set("Metadata", Value::dictionary({{"xesam:title", Value::text("T")},
                                           {"mpris:artUrl", Value::text("/missing.png")}}));
  EXPECT_EQ(errorNumber(kArtwork), kNoSuchObject);
}

}  // namespace
}  // namespace Corvella
