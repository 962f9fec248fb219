#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "players/mpris/track/TrackMetadata.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
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
                                  {{kNan}, {}, {}},
                                  {{kInfinity}, {}, {}},
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
      {{kNan}, 100},   {{Text("x")}, 100}, {{INT64_C(1)}, 100}};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(volumeOf(&rows[i].first), rows[i].second) << i;
  }
  EXPECT_EQ(volumeOf(nullptr), 100);
}

TEST(ARating, IsBroughtToPointsFromTheScaleItIsOn) {
  const std::vector<std::pair<double, int>> rows{{0, 0},    {0.8, 80},   {1, 100}, {2, 40},
                                                 {4.5, 90}, {5, 100},    {7, 70},  {10, 100},
                                                 {80, 80},  {1000, 100}, {-1, 0}};
  for (const auto& [rating, points] : rows) EXPECT_EQ(ratingPoints(rating), points) << rating;
}

TEST(AState, IsKnownInAnyCaseAndOtherwiseStopped) {
  const std::vector<std::pair<PropertyValue, PlayerState>> rows{
      {{Text("Playing")}, PlayerState::Playing},
      {{Text("PAUSED")}, PlayerState::Paused},
      {{Text("stopped")}, PlayerState::Stopped},
      {{Text("Buffering")}, PlayerState::Stopped},
      {{INT64_C(1)}, PlayerState::Stopped}};
  for (const auto& [status, state] : rows) EXPECT_EQ(stateOf(&status), state);
  EXPECT_EQ(stateOf(nullptr), PlayerState::Stopped);
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
