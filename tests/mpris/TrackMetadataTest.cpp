#include <chrono>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "players/mpris/track/TrackMetadata.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using std::chrono::microseconds;

constexpr auto kMonth = microseconds(24h * 31).count();

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
                                  {{"60000000"s}, {}, {}},
                                  {{}, {}, {}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows.data());
    EXPECT_EQ(metadataOf({{"mpris:length", row.value}}).length, row.length);
    EXPECT_EQ(positionOf(&row.value), row.position);
  }
}

TEST(AVolume, IsRoundedToTheScaleAndFullWhereThereIsNone) {
  const std::vector<std::pair<PropertyValue, int>> rows{
      {{0.33299}, 33}, {{3.0}, 100},  {{-1.0}, 0},        {{0.004}, 0},
      {{NAN}, 100},    {{"x"s}, 100}, {{INT64_C(1)}, 100}};
  for (const auto& [said, volume] : rows) EXPECT_EQ(volumeOf(&said), volume);
  EXPECT_EQ(volumeOf(nullptr), 100);
}

TEST(ARating, IsBroughtToPointsFromTheScaleItIsOn) {
  const std::vector<std::pair<double, int>> rows{{0, 0},    {0.8, 80}, {1, 100},    {2, 40},
                                                 {4.5, 90}, {5, 100},  {5.5, 55},   {7, 70},
                                                 {10, 100}, {80, 80},  {1000, 100}, {-1, 0}};
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
                                 {"xesam:artist", {Texts{"One", "", "Two"}}},
                                 {"xesam:album", {UINT64_C(7)}},
                                 {"xesam:userRating", {INT64_C(4)}},
                                 {"mpris:artUrl", {1.0}}});
  EXPECT_EQ(track.title, "1999");
  EXPECT_EQ(track.artist, "One, Two");
  EXPECT_EQ(track.album, "7");
  EXPECT_EQ(track.userRating, 4.0);
  EXPECT_EQ(track.artUrl, "");

  EXPECT_EQ(metadataOf({{"xesam:artist", {"Alone"s}}}).artist, "Alone");
  const PropertyValue noArtist{Texts{""}};
  EXPECT_EQ(metadataOf({{"xesam:artist", noArtist}, {"xesam:albumArtist", {Texts{"Band"}}}}).artist,
            "Band");
}

}  // namespace
}  // namespace Corvella
