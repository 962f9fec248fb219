#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "players/MusicPlayer.h"
#include "players/PlayerDescription.h"
#include "players/mpris/bus/PropertyValue.h"

namespace Corvella {

/// What a player is able to do, as its own list of properties tells.
struct PlayerAbilities {
  bool listsVolume = false;
  bool listsRating = false;

  bool operator==(const PlayerAbilities&) const = default;
};

/// A player as `PlayerRoster` knows it, which owns it and says which thread may use it.
struct KnownPlayer {
  std::set<std::string> names;  ///< Well-known ones; never empty.
  PlayerState state = PlayerState::Stopped;
  std::uint64_t lastChange = 0;  ///< Higher than that of players that changed before.
  bool silent = false;           ///< Missed a deadline and has not answered since.
  /// When it went from playing to stopped; absent when it has done anything else since.
  std::optional<std::chrono::steady_clock::time_point> stoppedPlaying;
  std::optional<PlayerAbilities> abilities;
  PlayerDescription description;  ///< But for what the other fields say.

  // As answered last; absent when the next answer is no news, whatever it is.
  std::optional<int> volume;
  std::optional<std::string> track;
  std::optional<std::chrono::microseconds> position;
  int mistypedAnswers = 0;   ///< Since it had news last.
  bool standsStill = false;  ///< It has not moved between its last two answers, which is known.

  /// Whether one of its names is `name` as `shortName` gives it, or is that of a copy, which adds
  /// ".instance…" to it. The case of ASCII letters does not matter.
  bool isCalled(std::string_view name) const;
  bool isCopyOf(std::string_view name) const;

  /// Higher is better for the choice of the current player.
  int rank() const;
  /// Whether it stopped playing less than that time ago. Some players say that they are stopped for
  /// a moment while they go to the next track.
  bool isBetweenTracks(std::chrono::milliseconds longest) const;
  /// All that is known of who it is and what it is able to do.
  PlayerDescription describe() const;

  /// Takes over a state; false when it has been in it.
  bool changeState(PlayerState newState);
  /// Takes over what the properties say of what it is able to do.
  void takeAbilities(const PropertyMap& properties);
  /// Takes over what the properties of its root interface say.
  void takeIdentity(const PropertyMap& properties);
  void forgetAnswers();
};

/// What `--player` takes for a bus name: what follows "org.mpris.MediaPlayer2." in any case.
std::string_view shortName(std::string_view name);

}  // namespace Corvella
