#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "players/MusicPlayer.h"
#include "players/mpris/bus/PropertyValue.h"

namespace Corvella {

/// The metadata of a track as a player lists it, whatever types the player chose; what is missing
/// or unusable is empty or absent.
struct TrackMetadata {
  std::string title;   ///< "xesam:title", else the base name of the url.
  std::string artist;  ///< "xesam:artist", else "xesam:albumArtist"; several joined by ", ".
  std::string album;
  std::string url;
  std::string artUrl;
  std::string asText;                               ///< Lyrics that the player itself tells.
  std::optional<double> userRating;                 ///< On whatever scale the player uses.
  std::optional<std::chrono::microseconds> length;  ///< More than zero.
};

/// Reads the "Metadata" property; null or another type gives empty metadata.
TrackMetadata readTrackMetadata(const PropertyValue* metadata);

/// Reads "PlaybackStatus", without regard to case; null or anything unknown is stopped.
PlayerState stateOf(const PropertyValue* status);

/// Reads "Volume" as 0..100; full scale when the player lists no finite number.
int volumeOf(const PropertyValue* volume);

/// Reads "Position"; negative positions are zero. Absent when the player lists no finite number.
std::optional<std::chrono::microseconds> positionOf(const PropertyValue* position);

/// A text, several joined by ", ", or a whole number; empty for everything else.
std::string textOf(const PropertyValue* value);

/// A finite number; absent for everything else.
std::optional<double> numberOf(const PropertyValue* value);

/// Whether "xesam:userRating" of the player with that bus name says that somebody rated the track:
/// players give 0 for a track that nobody rated, and Quod Libet gives 0.5.
bool meansRating(double userRating, std::string_view playerName);

/// Whether the player with that bus name is Rhythmbox, which keeps ratings by an interface of its
/// own.
bool isRhythmbox(std::string_view playerName);

/// A rating on one of the scales that players use (0..1, 0..5, 0..10, 0..100) as 0..100.
int ratingPoints(double rating);

}  // namespace Corvella
