#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FakePlayerOnTheBus.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

using Value = FakeMprisPlayer::Value;
using Entries = FakeMprisPlayer::Entries;

struct MetadataRow {
  std::string name;
  Value metadata;
  std::string state;
  std::string title;
  std::string status = "Playing";
  std::string identity{};
};

TEST_F(AFakePlayerOnTheBus, WithOddMetadataIsReadAllTheSame) {
  const std::string none = "No Song Playing";
  const std::vector<MetadataRow> rows{
      {"no dictionary", "nothing", "stopped", none},
      {"another dictionary", Value::of("a{ss}", 0), "stopped", none},
      {"empty texts", Entries({{"xesam:title", ""}, {"xesam:url", ""}}), "stopped", none},
      {"a track id alone", Entries({{"mpris:trackid", Value::of("o", "/noplaylist")}}), "stopped",
       none},
      {"a length alone", Entries({{"mpris:length", Value::of("t", std::uint64_t{5'000'000})}}),
       "playing", none},
      {"a length alone, in a player with a name", Entries({{"mpris:length", INT64_C(5'000'000)}}),
       "paused", "Radio", "Paused", "Radio"},
      {"nothing, in a player with a name that plays", Entries({}), "playing", "Radio", "Playing",
       "Radio"},
      {"nothing, in a player with a name that is paused", Entries({}), "stopped", none, "Paused",
       "Radio"},
      {"a url without a name", Entries({{"xesam:url", "http://"}}), "playing", "Radio", "Playing",
       "Radio"},
      {"a url and no title", Entries({{"xesam:title", ""}, {"xesam:url", "http://radio/a%20b"}}),
       "playing", "a b"},
      {"strange entries around the title",
       Entries({{"a", Value::of("(i)", 1)},
                {"b", Value::of("a{sv}", 1, "c", "as", 1, "d")},
                {"e", Value::of("ay", 1, 1)},
                {"f", Value::of("v", "v", "y", 2)},
                {"xesam:title", "Found"},
                {"z", Value::of("aao", 0)}}),
       "playing", "Found"}};
  for (const auto& row : rows) {
    fake_.set("Metadata", row.metadata);
    fake_.set("PlaybackStatus", row.status);
    fake_.set("Identity", row.identity);
    EXPECT_EQ(controller().playerState(), row.state) << row.name;     // Among all properties.
    EXPECT_EQ(controller().songInfo().title, row.title) << row.name;  // Alone.
    EXPECT_EQ(errorNumber(kArtwork), row.title == none ? kNoSuchObject : 0) << row.name;
    EXPECT_EQ(errorNumber(kSetRating), row.title == none ? kNoSuchObject : kNotUnderstood)
        << row.name;
  }
}

TEST_F(AFakePlayerOnTheBus, WithAnUntaggedTrackShowsThatItsArtistAndAlbumAreUnknown) {
  fake_.setMetadata({{"xesam:title", "T"}});
  EXPECT_EQ(controller().songInfo().artist, "Unknown Artist");
  EXPECT_EQ(controller().songInfo().album, "Unknown Album");
}

TEST_F(AFakePlayerOnTheBus, TellsItsLengthInAnyNumber) {
  const std::vector<std::pair<Value, std::string>> rows{
      {Value::of("y", 200), "0.0002"},
      {Value::of("n", 3000), "0.003"},
      {Value::of("q", 5000), "0.005"},
      {Value::of("i", 2'000'000), "2.0"},
      {Value::of("u", 4'000'000'000U), "4000.0"},
      {INT64_C(-1), "0"},
      {INT64_C(5'000'000'000), "5000.0"},
      {Value::of("t", std::uint64_t{7'000'001}), "7.000001"},
      {1.5e6, "1.5"},
      {Value::of("b", 1), "0"}};
  for (const auto& [length, finish] : rows) {
    fake_.setMetadata({{"xesam:title", "T"}, {"mpris:length", length}});
    EXPECT_EQ(controller().songInfo().finish, finish);
  }
}

TEST_F(AFakePlayerOnTheBus, CannotFillTheMemoryWithItsTexts) {
  std::string accents = "-";  // One byte, so that the limit falls into a character.
  while (accents.size() < 6000) accents += "\u00e9";
  const std::string artist(3000, 'a');
  const std::string lyrics(std::size_t{1} << 20U, 'l');
  fake_.setMetadata({{"xesam:title", accents},
                     {"xesam:artist", Value::of("as", 3, artist.c_str(), artist.c_str(), "No")},
                     {"xesam:asText", lyrics + "more"}});
  const auto song = controller().songInfo();
  EXPECT_EQ(song.title, accents.substr(0, 4095));
  EXPECT_EQ(song.artist, artist + ", " + artist.substr(0, 4096 - 3001));
  EXPECT_EQ(song.lyrics, lyrics);
}

struct RatingRow {
  std::string player;
  std::optional<double> rating;      ///< The player's property.
  std::optional<double> userRating;  ///< In the metadata.
  std::string url;
  int shown;
};

TEST_F(ABus, ShowsTheRatingOfThePlayerThenOfItsMetadataThenOfTheFile) {
  const TemporaryFolder folders[2];
  const auto rated = urlOf(makeTrack(folders[0], {"", "0.2", ""}, "flac"));
  const auto unrated = urlOf(makeTrack(folders[1], {}, "flac"));
  const std::vector<RatingRow> rows{
      {"fake", 0.6, 0.4, rated, 60},       {"fake", 0.0, 0.4, rated, 0},
      {"fake", {}, 0.4, rated, 40},        {"fake", {}, 0.0, rated, 20},
      {"fake", {}, {}, rated, 20},         {"fake", {}, 0.5, rated, 50},
      {"QuodLibet", {}, 0.5, rated, 20},   {"QuodLibet", {}, 0.4, rated, 40},
      {"QuodLibet", {}, 0.5, unrated, 50}, {"fake", {}, 0.0, unrated, 0},
      {"fake", {}, {}, unrated, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << &row - rows.data());
    Entries entries{{"xesam:url", row.url}};
    if (row.userRating) entries.emplace("xesam:userRating", *row.userRating);
    FakeMprisPlayer fake(bus_.address(), row.player);
    fake.setMetadata(entries);
    if (row.rating) fake.set("Rating", *row.rating);

    MprisPlayer player;
    EXPECT_EQ(ScriptedStack(player).controller.songInfo().ratings, row.shown);
  }
}

TEST_F(AFakePlayerOnTheBus, ShowsTheArtworkAndTheLyricsThatItTells) {
  constexpr auto gif = "data:image/gif;base64,R0lGODlhAQABAAAAADs=";
  fake_.setMetadata({{"xesam:title", "T"}, {"xesam:asText", "tra la"}, {"mpris:artUrl", gif}});
  const auto artworkSize = [this] {
    const auto artwork = stack_->runner.run(std::string("tell app \"iTunes\" to ") + kArtwork);
    return artwork.result ? std::optional(artwork.result->data().size()) : std::nullopt;
  };
  EXPECT_EQ(artworkSize(), 14U);
  EXPECT_EQ(controller().songLyrics(), "tra la");
  EXPECT_EQ(controller().songInfo().lyrics, "tra la");

  fake_.setMetadata({{"xesam:title", "T"}, {"mpris:artUrl", "/missing.png"}});
  EXPECT_EQ(artworkSize(), 0U);
}

}  // namespace
}  // namespace Corvella
