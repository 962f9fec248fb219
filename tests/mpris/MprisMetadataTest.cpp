#include <chrono>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "players/mpris/track/TrackMetadata.h"
#include "tests/support/FakePlayerOnTheBus.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;
using Value = FakeMprisPlayer::Value;
using Entries = FakeMprisPlayer::Entries;

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

TEST_F(AFakePlayerOnTheBus, WithOddMetadataIsReadAllTheSame) {
  struct Row {
    std::string name;
    Value metadata;
    std::string state;
    std::string title;
    std::string status = "Playing";
    std::string identity{};
  };
  const std::string none = "No Song Playing";
  const std::vector<Row> rows{
      {"no dictionary", "nothing", "stopped", none},
      {"another dictionary", Value::of("a{ss}", 0), "stopped", none},
      {"empty texts", Entries({{"xesam:title", ""}, {"xesam:url", ""}}), "stopped", none},
      {"a track id", Entries({{"mpris:trackid", Value::of("o", "/noplaylist")}}), "stopped", none},
      {"a length", Entries({{"mpris:length", INT64_C(5'000'000)}}), "playing", none},
      {"a length in a player with a name", Entries({{"mpris:length", INT64_C(5'000'000)}}),
       "paused", "Radio", "Paused", "Radio"},
      {"nothing, with a name, playing", Entries(), "playing", "Radio", "Playing", "Radio"},
      {"nothing, with a name, paused", Entries(), "stopped", none, "Paused", "Radio"},
      {"a url that names nothing", Entries({{"xesam:url", "http://"}}), "playing", "Radio",
       "Playing", "Radio"},
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
    SCOPED_TRACE(row.name);
    fake_.set("Metadata", row.metadata);
    fake_.set("PlaybackStatus", row.status);
    fake_.set("Identity", row.identity);
    EXPECT_EQ(controller().playerState(), row.state);     // Among all properties.
    EXPECT_EQ(controller().songInfo().title, row.title);  // Alone.
    EXPECT_EQ(errorNumber(kArtwork), row.title == none ? kNoSuchObject : 0);
    EXPECT_EQ(errorNumber(kSetRating), row.title == none ? kNoSuchObject : kNotUnderstood);
  }
}

TEST_F(AFakePlayerOnTheBus, TellsItsLengthInAnyNumber) {
  for (const auto& [length, finish] : {std::pair(Value::of("y", 200), "0.0002"),
                                       {Value::of("n", 3000), "0.003"},
                                       {Value::of("q", 5000), "0.005"},
                                       {Value::of("i", 2'000'000), "2.0"},
                                       {Value::of("u", 4'000'000'000U), "4000.0"},
                                       {Value::of("t", UINT64_C(7'000'001)), "7.000001"},
                                       {Value::of("b", 1), "0"}}) {
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

TEST_F(ABus, ShowsTheRatingOfThePlayerThenOfItsMetadataThenOfTheFile) {
  const TemporaryFolder folders[2];
  const auto rated = urlOf(makeTrack(folders[0], {.rating = "0.2"}, "flac"));
  const auto unrated = urlOf(makeTrack(folders[1], {}, "flac"));
  struct Row {
    std::string player;
    std::optional<double> rating;      ///< The player's property.
    std::optional<double> userRating;  ///< In the metadata.
    std::string url;
    int shown;
  };
  const std::vector<Row> rows{
      {"any", 0.6, 0.4, rated, 60},        {"any", 0.0, 0.4, rated, 0},
      {"any", {}, 0.4, rated, 40},         {"any", {}, 0.0, rated, 20},
      {"any", {}, {}, rated, 20},          {"any", {}, 0.5, rated, 50},
      {"QuodLibet", {}, 0.5, rated, 20},   {"QuodLibet", {}, 0.4, rated, 40},
      {"QuodLibet", {}, 0.5, unrated, 50}, {"any", {}, 0.0, unrated, 0},
      {"any", {}, {}, unrated, 0}};
  for (const auto& row : rows) {
    FakeMprisPlayer fake(bus_.address(), row.player);
    Entries entries{{"xesam:url", row.url}};
    if (row.userRating) entries.emplace("xesam:userRating", *row.userRating);
    fake.setMetadata(entries);
    if (row.rating) fake.set("Rating", *row.rating);
    connect(patience, row.player);
    EXPECT_EQ(controller().songInfo().ratings, row.shown) << &row - rows.data();
  }
}

TEST_F(AFakePlayerOnTheBus, ShowsTheArtworkAndTheLyricsThatItTellsAndUnknownForTheRest) {
  constexpr auto gif = "data:image/gif;base64,R0lGODlhAQABAAAAADs=";
  fake_.setMetadata({{"xesam:title", "T"}, {"xesam:asText", "tra la"}, {"mpris:artUrl", gif}});
  EXPECT_EQ(player_->artworkOfCurrentTrack()->size(), 14U);
  EXPECT_EQ(controller().songLyrics(), "tra la");
  EXPECT_EQ(controller().songInfo(),
            (SongInfo{"T", "Unknown Artist", "Unknown Album", "tra la", 0, 100, "0"}));

  fake_.setMetadata({{"xesam:title", "T"}, {"mpris:artUrl", "/missing.png"}});
  EXPECT_EQ(player_->artworkOfCurrentTrack()->size(), 0U);
}

}  // namespace
}  // namespace Corvella
