#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSBundle.h"
#include "players/MusicPlayer.h"
#include "players/PlayerNews.h"
#include "players/embedded/EmbeddedTracks.h"

namespace Corvella {

/// A player without sound that is always at hand: it goes round a list of tracks by the clock
/// alone.
///
/// It starts playing the first track. A track's end leads to the next track, the last one's to the
/// first. Next and Previous go round too, start the track anew and leave it playing or paused as
/// before. A player of no tracks is running and stopped; transport does nothing there.
///
/// Any thread. What happened since the last call is worked out in the next; only for a listener
/// that wants to know does a thread sleep until the track ends.
class EmbeddedPlayer final : public MusicPlayer {
 public:
  /// Each track must have a finish. The clock, the bundle, which holds the covers, and `listener`,
  /// which may be null, must outlive the player. The listener is told of tracks that end by
  /// themselves, if it was listening when the player was asked last.
  EmbeddedPlayer(const Clock& clock, const NSBundle& bundle,
                 std::vector<EmbeddedTrack> tracks = embeddedTracks(),
                 PlayerNewsListener* listener = nullptr);

  bool running() override { return true; }
  PlayerAnswer<PlayerState> playerState() override;
  PlayerAnswer<std::optional<std::chrono::microseconds>> playerPosition() override;

  PlayerAnswer<int> soundVolume() override;
  PlayerAnswer<Done> setSoundVolume(int volume) override;

  PlayerAnswer<Track> currentTrack() override;
  PlayerAnswer<std::string> lyricsOfCurrentTrack() override;
  PlayerAnswer<std::vector<std::byte>> artworkOfCurrentTrack() override;
  PlayerAnswer<Done> setRatingOfCurrentTrack(int rating) override;

  PlayerAnswer<Done> perform(PlaybackRequest request) override;

  PlayerDescription description() override;

 private:
  // These three are called with the mutex held.

  /// The current track as of now; null when there are no tracks.
  EmbeddedTrack* trackNow();
  /// Puts a position beyond the current track's end where it belongs.
  void carryOver();
  /// Has the thread wait for the end of the track that plays, if anyone wants to know of it.
  void expectEnd();

  /// Tells of each end that is expected. Runs on the thread.
  void tellEnds(const std::stop_token& stop);

  /// The current track's cover; absent when there is no track.
  std::optional<std::string> coverNow();

  const Clock& clock_;
  const NSBundle& bundle_;
  PlayerNewsListener* const listener_;

  std::mutex mutex_;  // Guards everything below.
  std::vector<EmbeddedTrack> tracks_;
  std::size_t current_ = 0;
  PlayerState state_;
  // This is in the clock's own unit, so that steps shorter than a microsecond add up, too.
  Clock::TimePoint::duration position_{0};
  Clock::TimePoint asOf_;  // When `position_` was right.
  int volume_ = 80;
  std::optional<Clock::TimePoint> expectedEnd_;
  std::condition_variable_any expectationChanged_;

  std::jthread thread_;  // Last: it uses all of the above until it ends.
};

}  // namespace Corvella
