#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "players/MusicPlayer.h"
#include "players/mpris/MprisBus.h"
#include "players/mpris/PlayerRoster.h"
#include "players/mpris/TrackFileReader.h"
#include "players/mpris/TrackMetadata.h"

namespace Corvella {

/// The current one of the players on the session bus, as `PlayerRoster` chooses it.
///
/// Any thread, and calls may overlap. Each call asks the player at that moment; one that missed a
/// deadline (`MprisBus::kDeadline`) fails every call at once until it has answered a probe.
class MprisPlayer final : public MusicPlayer {
 public:
  /// Connects to the session bus and starts to follow its players. With a `pinnedName` only players
  /// of that name count (see `PlayerRoster`). Throws `std::runtime_error` when no bus is reachable.
  explicit MprisPlayer(std::string pinnedName = {});

  /// The players on the bus that count, by name. Waits for the first list, at most one deadline.
  std::vector<PlayerRoster::Player> players() const;

  bool running() override;
  PlayerAnswer<PlayerState> playerState() override;
  PlayerAnswer<std::optional<std::chrono::microseconds>> playerPosition() override;
  PlayerAnswer<int> soundVolume() override;
  PlayerAnswer<Done> setSoundVolume(int volume) override;
  PlayerAnswer<Track> currentTrack() override;
  PlayerAnswer<std::string> lyricsOfCurrentTrack() override;
  PlayerAnswer<std::vector<std::byte>> artworkOfCurrentTrack() override;
  PlayerAnswer<Done> setRatingOfCurrentTrack(int rating) override;
  PlayerAnswer<Done> perform(PlaybackRequest request) override;

 private:
  struct Described;

  PlayerAnswer<PlayerRoster::Player> reachablePlayer();
  template <typename Question>
  auto ask(const PlayerRoster::Player& player, Question question) -> decltype(question());
  PlayerAnswer<PropertyValue> get(const PlayerRoster::Player& player, const char* property);
  PlayerAnswer<PropertyMap> getAll(const PlayerRoster::Player& player);
  PlayerAnswer<PropertyMap> getOneByOne(const PlayerRoster::Player& player);
  PlayerState learnedState(const PlayerRoster::Player& player, const PropertyMap& properties);
  PlayerAnswer<PlayerAbilities> abilitiesOf(const PlayerRoster::Player& player);
  PlayerAnswer<Done> call(const PlayerRoster::Player& player, const char* method);
  PlayerAnswer<Done> play(const PlayerRoster::Player& player);
  PlayerAnswer<Described> describedTrack(const PlayerRoster::Player& player);
  PlayerAnswer<TrackMetadata> currentMetadata();

  PlayerRoster roster_;
  TrackFileReader files_;
  MprisBus bus_;  // Last: it reports to the roster until it ends.
};

}  // namespace Corvella
