#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "players/PlayerAnswer.h"
#include "players/PlayerDescription.h"
#include "scripting/PlaybackRequest.h"

namespace Corvella {

enum class PlayerState : std::uint8_t { Stopped, Playing, Paused };

/// A track as a player describes it. All texts are UTF-8.
struct Track {
  std::string name;
  std::string artist;
  std::string album;
  std::string lyrics;
  int rating = 0;                                   ///< 0..100
  std::optional<std::chrono::microseconds> finish;  ///< Where the track ends; more than zero.
};

/// A player: its scripting dictionary, which is what scripts can ask of it, and what a host wants
/// to know of it besides.
///
/// Any thread, and calls may overlap. Each call of the dictionary reads the player at that moment,
/// blocks no longer than the player's own deadline, and raises nothing.
class MusicPlayer {
 public:
  virtual ~MusicPlayer() = default;

  virtual bool running() = 0;
  virtual PlayerAnswer<PlayerState> playerState() = 0;
  /// Not negative; absent when the player keeps none.
  virtual PlayerAnswer<std::optional<std::chrono::microseconds>> playerPosition() = 0;

  /// 0..100
  virtual PlayerAnswer<int> soundVolume() = 0;
  /// `volume` is 0..100.
  virtual PlayerAnswer<Done> setSoundVolume(int volume) = 0;

  virtual PlayerAnswer<Track> currentTrack() = 0;
  virtual PlayerAnswer<std::string> lyricsOfCurrentTrack() = 0;
  /// The bytes of a picture file, of whatever kind; none when the track has no artwork.
  virtual PlayerAnswer<std::vector<std::byte>> artworkOfCurrentTrack() = 0;
  /// `rating` is 0..100.
  virtual PlayerAnswer<Done> setRatingOfCurrentTrack(int rating) = 0;

  virtual PlayerAnswer<Done> perform(PlaybackRequest request) = 0;

  /// The current player as it is known; asks nobody and does not block.
  virtual PlayerDescription description() = 0;
  /// All players that there are to choose from, likewise; no two of the same identity.
  virtual std::vector<PlayerDescription> players() { return {description()}; }
  /// Has the current player bring up its window, where it can; does not wait for it.
  virtual void raise() {}
};

}  // namespace Corvella
