#pragma once

#include <new>
#include <optional>
#include <string>
#include <vector>

#include "players/MusicPlayer.h"

namespace Corvella {

/// A player whose answers are plain fields; with a `failure` set, everything fails with it.
class FakeMusicPlayer final : public MusicPlayer {
 public:
  std::optional<PlayerFailure> failure;
  bool answersTooMuch = false;  ///< More than fits into memory.
  PlayerState state = PlayerState::Paused;
  int volume = 35;
  Track track{"Name", "Artist", "Album", "La la", 60, std::chrono::milliseconds(215'500)};
  std::vector<std::byte> artwork;
  std::vector<PlaybackRequest> requests;

  bool running() override { return true; }
  PlayerAnswer<PlayerState> playerState() override { return orFailure(state); }
  PlayerAnswer<std::optional<std::chrono::microseconds>> playerPosition() override {
    return orFailure(std::optional(std::chrono::microseconds(63'500'000)));
  }
  PlayerAnswer<int> soundVolume() override { return orFailure(volume); }
  PlayerAnswer<Done> setSoundVolume(int newVolume) override {
    volume = newVolume;
    return orFailure(Done());
  }
  PlayerAnswer<Track> currentTrack() override { return orFailure(track); }
  PlayerAnswer<std::string> lyricsOfCurrentTrack() override { return orFailure(track.lyrics); }
  PlayerAnswer<std::vector<std::byte>> artworkOfCurrentTrack() override {
    return orFailure(artwork);
  }
  PlayerAnswer<Done> setRatingOfCurrentTrack(int rating) override {
    track.rating = rating;
    return orFailure(Done());
  }
  PlayerAnswer<Done> perform(PlaybackRequest request) override {
    requests.push_back(request);
    return orFailure(Done());
  }
  PlayerDescription description() override { return {.name = "fake", .identity = "Fake"}; }

 private:
  template <typename Value>
  PlayerAnswer<Value> orFailure(Value value) const {
    if (answersTooMuch) throw std::bad_alloc();
    if (failure) return *failure;
    return value;
  }
};

}  // namespace Corvella
