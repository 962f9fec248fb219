#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "players/mpris/TrackMetadata.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

using std::chrono::microseconds;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TrackMetadata metadataOf(std::vector<Property> entries) {
  const PropertyValue metadata{PropertyMap(std::move(entries))};
  return readTrackMetadata(&metadata);
}

PropertyValue text(const std::string& value) {
  return {value};
}
PropertyValue signedNumber(std::int64_t value) {
  return {value};
}
PropertyValue unsignedNumber(std::uint64_t value) {
  return {value};
}
PropertyValue real(double value) {
  return {value};
}
PropertyValue texts(std::vector<std::string> values) {
  return {std::move(values)};
}

struct LengthRow {
  std::string name;
  PropertyValue length;
  std::optional<microseconds> expected;
};

class ALength : public testing::TestWithParam<LengthRow> {};

TEST_P(ALength, CountsWhenItCanBeOne) {
  EXPECT_EQ(metadataOf({{"mpris:length", GetParam().length}}).length, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    OfEachType, ALength,
    testing::Values(LengthRow{"Signed", signedNumber(60'029'388), microseconds(60'029'388)},
                    LengthRow{"Unsigned", unsignedNumber(5), microseconds(5)},
                    LengthRow{"Real", real(2.5e6), microseconds(2'500'000)},
                    LengthRow{"Zero", signedNumber(0), std::nullopt},
                    LengthRow{"Negative", signedNumber(-1), std::nullopt},
                    LengthRow{"NegativeMadeUnsigned", unsignedNumber(UINT64_MAX), std::nullopt},
                    LengthRow{"TopOfTheRange", signedNumber(INT64_MAX), std::nullopt},
                    LengthRow{"MonthsLong",
                              signedNumber(microseconds(std::chrono::hours(24 * 31)).count()),
                              std::nullopt},
                    LengthRow{"NotANumber", real(kNan), std::nullopt},
                    LengthRow{"Infinite", real(kInfinity), std::nullopt},
                    LengthRow{"HugeReal", real(1e300), std::nullopt},
                    LengthRow{"Text", text("60000000"), std::nullopt},
                    LengthRow{"Nothing", {}, std::nullopt}),
    rowName);

TEST(APosition, IsNeverNegativeAndFollowsAnyNumber) {
  const std::vector<std::pair<PropertyValue, std::optional<microseconds>>> rows{
      {signedNumber(12'345'011), microseconds(12'345'011)},
      {signedNumber(-250'000), microseconds(0)},
      {unsignedNumber(7), microseconds(7)},
      {real(1.5e6), microseconds(1'500'000)},
      {real(-3), microseconds(0)},
      {real(kNan), std::nullopt},
      {text("12"), std::nullopt}};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(positionOf(&rows[i].first), rows[i].second) << i;
  }
  EXPECT_EQ(positionOf(nullptr), std::nullopt);
}

TEST(AVolume, IsRoundedToTheScaleAndFullWhereThereIsNone) {
  const std::vector<std::pair<PropertyValue, int>> rows{
      {real(0.33299), 33}, {real(0.8), 80},  {real(3.0), 100},       {real(-1), 0},
      {real(kNan), 100},   {text("x"), 100}, {signedNumber(1), 100}, {real(0.004), 0}};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(volumeOf(&rows[i].first), rows[i].second) << i;
  }
  EXPECT_EQ(volumeOf(nullptr), 100);
}

TEST(ARating, IsBroughtToPointsFromTheScaleItIsOn) {
  const std::vector<std::pair<double, int>> rows{{0, 0},    {0.5, 50}, {0.8, 80},   {1, 100},
                                                 {2, 40},   {4.5, 90}, {5, 100},    {7, 70},
                                                 {10, 100}, {80, 80},  {1000, 100}, {-1, 0}};
  for (const auto& [rating, points] : rows) EXPECT_EQ(ratingPoints(rating), points) << rating;
}

TEST(AState, IsKnownInAnyCaseAndOtherwiseStopped) {
  const std::vector<std::pair<PropertyValue, PlayerState>> rows{
      {text("Playing"), PlayerState::Playing}, {text("PAUSED"), PlayerState::Paused},
      {text("stopped"), PlayerState::Stopped}, {text("Buffering"), PlayerState::Stopped},
      {text(""), PlayerState::Stopped},        {signedNumber(1), PlayerState::Stopped}};
  for (const auto& [status, state] : rows) EXPECT_EQ(stateOf(&status), state);
  EXPECT_EQ(stateOf(nullptr), PlayerState::Stopped);
}

TEST(Texts, AreTakenFromWhateverTypeAPlayerSends) {
  const auto track = metadataOf({{"xesam:title", signedNumber(1999)},
                                 {"xesam:artist", texts({"", "One", "Two"})},
                                 {"xesam:album", text("An Album")},
                                 {"xesam:userRating", signedNumber(4)},
                                 {"mpris:artUrl", real(1)}});
  EXPECT_EQ(track.title, "1999");
  EXPECT_EQ(track.artist, "One, Two");
  EXPECT_EQ(track.album, "An Album");
  EXPECT_EQ(track.userRating, 4.0);
  EXPECT_EQ(track.artUrl, "");

  EXPECT_EQ(metadataOf({{"xesam:artist", text("Alone")}}).artist, "Alone");
  EXPECT_EQ(
      metadataOf({{"xesam:artist", texts({""})}, {"xesam:albumArtist", texts({"Band"})}}).artist,
      "Band");
}

TEST(ATrackWithoutATitle, IsCalledAfterItsFile) {
  const auto url = text("file:///music/A%20song%20%231.mp3");
  EXPECT_EQ(metadataOf({{"xesam:url", url}}).title, "A song #1.mp3");
  EXPECT_EQ(metadataOf({{"xesam:title", text("")}, {"xesam:url", url}}).title, "A song #1.mp3");
  EXPECT_EQ(metadataOf({{"mpris:trackid", text("/noplaylist")}}).title, "");
  const PropertyValue noDictionary{std::string("none")};
  EXPECT_EQ(readTrackMetadata(&noDictionary).title, "");
}

}  // namespace
}  // namespace Corvella
