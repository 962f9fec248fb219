#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "players/MusicPlayer.h"

namespace Corvella {

/// Takes a player's place where there can be none: a widget on it shows that nothing plays.
class NoPlayer final : public MusicPlayer {
 public:
  /// `missing` is what is not running, as users are told.
  explicit NoPlayer(std::string missing) : missing_(std::move(missing)) {}

  bool running() override { return false; }
  PlayerAnswer<PlayerState> playerState() override { return PlayerFailure::NotRunning; }
  PlayerAnswer<std::optional<std::chrono::microseconds>> playerPosition() override {
    return PlayerFailure::NotRunning;
  }
  PlayerAnswer<int> soundVolume() override { return PlayerFailure::NotRunning; }
  PlayerAnswer<Done> setSoundVolume(int /*volume*/) override { return PlayerFailure::NotRunning; }
  PlayerAnswer<Track> currentTrack() override { return PlayerFailure::NotRunning; }
  PlayerAnswer<std::string> lyricsOfCurrentTrack() override { return PlayerFailure::NotRunning; }
  PlayerAnswer<std::vector<std::byte>> artworkOfCurrentTrack() override {
    return PlayerFailure::NotRunning;
  }
  PlayerAnswer<Done> setRatingOfCurrentTrack(int /*rating*/) override {
    return PlayerFailure::NotRunning;
  }
  PlayerAnswer<Done> perform(PlaybackRequest /*request*/) override {
    return PlayerFailure::NotRunning;
  }
  PlayerDescription description() override {
    PlayerDescription nobody;
    nobody.identity = missing_;
    return nobody;
  }
  std::vector<PlayerDescription> players() override { return {}; }

 private:
  const std::string missing_;
};

}  // namespace Corvella
