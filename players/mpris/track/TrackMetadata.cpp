#include "players/mpris/track/TrackMetadata.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <variant>
#include <vector>

#include "platform/foundation/NSString.h"
#include "players/AsciiText.h"
#include "players/mpris/track/FileUrl.h"

namespace Corvella {

namespace {

using std::chrono::microseconds;

// Some players give a stream without an end a length near the top of the range.
constexpr microseconds kLongestTrack = std::chrono::hours(24) * 30;

std::string joined(const std::vector<std::string>& texts) {
  std::string result;
  for (const auto& text : texts) {
    if (text.empty()) continue;
    if (!result.empty()) result += ", ";
    result += text;
  }
  return result;
}

std::int64_t limited(double number) {
  // The greatest double below 2^63.
  constexpr double kLimit = 9223372036854774784.0;
  return static_cast<std::int64_t>(std::clamp(number, -kLimit, kLimit));
}

std::optional<microseconds> durationOf(const PropertyValue* value) {
  if (value == nullptr) return std::nullopt;
  if (const auto* number = std::get_if<std::int64_t>(&value->content)) return microseconds(*number);
  // A number too large for the signed type was a negative one that a player sent as unsigned.
  if (const auto* number = std::get_if<std::uint64_t>(&value->content)) {
    return microseconds(static_cast<std::int64_t>(*number));
  }
  const auto number = numberOf(value);
  return number ? std::optional(microseconds(limited(*number))) : std::nullopt;
}

std::optional<microseconds> lengthOf(const PropertyValue* value) {
  const auto length = durationOf(value);
  if (!length || *length <= microseconds::zero() || *length > kLongestTrack) return std::nullopt;
  return length;
}

std::string firstText(const PropertyMap& map, std::string_view name, std::string_view otherwise) {
  auto text = textOf(map.find(name));
  return text.empty() ? textOf(map.find(otherwise)) : text;
}

}  // namespace

TrackMetadata readTrackMetadata(const PropertyValue* metadata) {
  TrackMetadata track;
  const auto* map = metadata != nullptr ? std::get_if<PropertyMap>(&metadata->content) : nullptr;
  if (map == nullptr) return track;

  track.url = textOf(map->find("xesam:url"));
  track.title = textOf(map->find("xesam:title"));
  if (track.title.empty()) track.title = baseNameOfUrl(track.url);
  track.artist = firstText(*map, "xesam:artist", "xesam:albumArtist");
  track.album = textOf(map->find("xesam:album"));
  track.artUrl = textOf(map->find("mpris:artUrl"));
  track.asText = textOf(map->find("xesam:asText"));
  track.userRating = numberOf(map->find("xesam:userRating"));
  track.length = lengthOf(map->find("mpris:length"));
  return track;
}

PlayerState stateOf(const PropertyValue* status) {
  const auto word = NSString::lowercaseString(textOf(status));
  if (word == "playing") return PlayerState::Playing;
  if (word == "paused") return PlayerState::Paused;
  return PlayerState::Stopped;
}

int volumeOf(const PropertyValue* volume) {
  const double share = numberOf(volume).value_or(1.0);
  return static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * 100));
}

std::optional<microseconds> positionOf(const PropertyValue* position) {
  const auto value = durationOf(position);
  return value ? std::optional(std::max(*value, microseconds::zero())) : std::nullopt;
}

std::string textOf(const PropertyValue* value) {
  if (value == nullptr) return {};
  if (const auto* text = std::get_if<std::string>(&value->content)) return *text;
  if (const auto* texts = std::get_if<std::vector<std::string>>(&value->content)) {
    return joined(*texts);
  }
  if (const auto* number = std::get_if<std::int64_t>(&value->content)) {
    return std::to_string(*number);
  }
  if (const auto* number = std::get_if<std::uint64_t>(&value->content)) {
    return std::to_string(*number);
  }
  return {};
}

std::optional<double> numberOf(const PropertyValue* value) {
  if (value == nullptr) return std::nullopt;
  if (const auto* number = std::get_if<std::int64_t>(&value->content)) {
    return static_cast<double>(*number);
  }
  if (const auto* number = std::get_if<std::uint64_t>(&value->content)) {
    return static_cast<double>(*number);
  }
  const auto* number = std::get_if<double>(&value->content);
  return number != nullptr && std::isfinite(*number) ? std::optional(*number) : std::nullopt;
}

bool meansRating(double userRating, std::string_view playerName) {
  const bool quodLibet = sameText(playerName, "org.mpris.MediaPlayer2.quodlibet");
  return userRating > 0 && !(quodLibet && userRating == 0.5);
}

bool isRhythmbox(std::string_view playerName) {
  return sameText(playerName, "org.mpris.MediaPlayer2.rhythmbox");
}

int ratingPoints(double rating) {
  double points = rating;
  if (rating <= 1) {
    points *= 100;
  } else if (rating <= 5) {
    points *= 20;
  } else if (rating <= 10) {
    points *= 10;
  }
  return static_cast<int>(std::lround(std::clamp(points, 0.0, 100.0)));
}

}  // namespace Corvella
