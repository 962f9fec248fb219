#include "players/embedded/EmbeddedPlayer.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <utility>

namespace Corvella {

namespace {

using Duration = Clock::TimePoint::duration;

Duration lengthOf(const EmbeddedTrack& track) {
  return track.track.finish.value_or(std::chrono::microseconds{0});
}

Duration lengthOf(const std::vector<EmbeddedTrack>& tracks) {
  Duration sum{0};
  for (const auto& track : tracks) sum += lengthOf(track);
  return sum;
}

[[maybe_unused]] bool everyTrackEnds(const std::vector<EmbeddedTrack>& tracks) {
  return std::ranges::all_of(
      tracks, [](const EmbeddedTrack& track) { return lengthOf(track) > Duration::zero(); });
}

}  // namespace

EmbeddedPlayer::EmbeddedPlayer(const Clock& clock, const NSBundle& bundle,
                               std::vector<EmbeddedTrack> tracks, PlayerNewsListener* listener)
    : clock_(clock),
      bundle_(bundle),
      listener_(listener),
      tracks_(std::move(tracks)),
      state_(tracks_.empty() ? PlayerState::Stopped : PlayerState::Playing),
      asOf_(clock.now()) {
  assert(everyTrackEnds(tracks_));
  if (listener_ == nullptr) return;
  thread_ = std::jthread([this](const std::stop_token& stop) { tellEnds(stop); });
}

PlayerAnswer<PlayerState> EmbeddedPlayer::playerState() {
  const std::scoped_lock lock(mutex_);
  return state_;
}

PlayerAnswer<std::optional<std::chrono::microseconds>> EmbeddedPlayer::playerPosition() {
  const std::scoped_lock lock(mutex_);
  trackNow();
  return std::optional(std::chrono::floor<std::chrono::microseconds>(position_));
}

PlayerAnswer<int> EmbeddedPlayer::soundVolume() {
  const std::scoped_lock lock(mutex_);
  return volume_;
}

PlayerAnswer<Done> EmbeddedPlayer::setSoundVolume(int volume) {
  const std::scoped_lock lock(mutex_);
  volume_ = std::clamp(volume, 0, 100);
  return Done{};
}

PlayerAnswer<Track> EmbeddedPlayer::currentTrack() {
  const std::scoped_lock lock(mutex_);
  const auto* current = trackNow();
  if (current == nullptr) return PlayerFailure::NoSuchObject;
  return current->track;
}

PlayerAnswer<std::string> EmbeddedPlayer::lyricsOfCurrentTrack() {
  const std::scoped_lock lock(mutex_);
  const auto* current = trackNow();
  if (current == nullptr) return PlayerFailure::NoSuchObject;
  return current->track.lyrics;
}

PlayerAnswer<std::vector<std::byte>> EmbeddedPlayer::artworkOfCurrentTrack() {
  const auto cover = coverNow();
  if (!cover) return PlayerFailure::NoSuchObject;
  return bundle_.dataForResource("covers/" + *cover + ".png").value_or(std::vector<std::byte>());
}

PlayerAnswer<Done> EmbeddedPlayer::setRatingOfCurrentTrack(int rating) {
  const std::scoped_lock lock(mutex_);
  auto* current = trackNow();
  if (current == nullptr) return PlayerFailure::NoSuchObject;
  current->track.rating = std::clamp(rating, 0, 100);
  return Done{};
}

PlayerAnswer<Done> EmbeddedPlayer::perform(PlaybackRequest request) {
  const std::scoped_lock lock(mutex_);
  if (trackNow() == nullptr) return Done{};
  switch (request) {
    case PlaybackRequest::Play:
      state_ = PlayerState::Playing;
      break;
    case PlaybackRequest::Pause:
      state_ = PlayerState::Paused;
      break;
    case PlaybackRequest::Previous:
      current_ = (current_ + tracks_.size() - 1) % tracks_.size();
      position_ = Duration::zero();
      break;
    case PlaybackRequest::Next:
      current_ = (current_ + 1) % tracks_.size();
      position_ = Duration::zero();
      break;
  }
  expectEnd();
  return Done{};
}

EmbeddedTrack* EmbeddedPlayer::trackNow() {
  const auto now = clock_.now();
  const auto passed = now - std::exchange(asOf_, now);
  if (state_ == PlayerState::Playing) position_ += passed;
  if (tracks_.empty()) return nullptr;
  if (position_ >= lengthOf(tracks_[current_])) carryOver();
  expectEnd();
  return &tracks_[current_];
}

void EmbeddedPlayer::carryOver() {
  // Whole rounds of the list change nothing, and a machine may have slept through many.
  position_ %= lengthOf(tracks_);
  while (position_ >= lengthOf(tracks_[current_])) {
    position_ -= lengthOf(tracks_[current_]);
    current_ = (current_ + 1) % tracks_.size();
  }
}

void EmbeddedPlayer::expectEnd() {
  const bool awaited =
      listener_ != nullptr && listener_->isListening() && state_ == PlayerState::Playing;
  const auto end =
      awaited ? std::optional(asOf_ + lengthOf(tracks_[current_]) - position_) : std::nullopt;
  if (std::exchange(expectedEnd_, end) != end) expectationChanged_.notify_one();
}

void EmbeddedPlayer::tellEnds(const std::stop_token& stop) {
  std::unique_lock lock(mutex_);
  while (!stop.stop_requested()) {
    const auto end = expectedEnd_;
    const auto changed = [&] { return expectedEnd_ != end; };
    if (!end) {
      expectationChanged_.wait(lock, stop, changed);
    } else if (!expectationChanged_.wait_until(lock, stop, *end, changed) &&
               !stop.stop_requested()) {
      trackNow();
      listener_->playerNews(PlayerNews::Changed);
    }
  }
}

std::optional<std::string> EmbeddedPlayer::coverNow() {
  const std::scoped_lock lock(mutex_);
  const auto* current = trackNow();
  return current == nullptr ? std::nullopt : std::optional(current->cover);
}

PlayerDescription EmbeddedPlayer::description() {
  const std::lock_guard lock(mutex_);
  return {
      .name = "embedded", .identity = "Built-in player", .playing = state_ == PlayerState::Playing};
}

}  // namespace Corvella
