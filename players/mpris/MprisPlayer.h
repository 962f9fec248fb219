#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "players/MusicPlayer.h"
#include "players/mpris/PlayerRoster.h"
#include "players/mpris/artwork/WebPictures.h"
#include "players/mpris/bus/MprisBus.h"
#include "players/mpris/track/TrackFileReader.h"
#include "players/mpris/track/TrackMetadata.h"

namespace Corvella {

/// The current one of the players on the session bus, as `PlayerRoster` chooses it. It is chosen
/// anew by the question whether a player runs, with which each look at the player begins; all that
/// follows asks the same player.
///
/// Any thread, and calls may overlap. Each call asks the player at that moment; one that missed a
/// deadline (`MprisDeadlines::call`) fails every call at once until it has answered a probe.
class MprisPlayer final : public MusicPlayer {
 public:
  /// Starts to follow the players on the session bus, which may come later or again. With a
  /// `pinnedName` only players of that name count (see `PlayerRoster`). `listener`, which may be
  /// null, outlives the player.
  explicit MprisPlayer(const std::string& pinnedName = {}, const MprisDeadlines& deadlines = {},
                       PlayerNewsListener* listener = nullptr);

  /// The players on the bus that count, by name. Waits for the first list, at most one deadline.
  std::vector<PlayerRoster::Player> candidates() const;

  /// Whether the session bus has answered and not ended since. Waits for nobody.
  bool busAnswers() const { return roster_.busAnswers(); }

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

  PlayerDescription description() override { return roster_.currentDescription(); }
  std::vector<PlayerDescription> players() override { return roster_.descriptions(); }
  void raise() override;

 private:
  /// The current track's metadata, and the rating that the player keeps outside of it.
  struct Described {
    TrackMetadata metadata;
    std::optional<double> rating;

    /// 0..100
    int ratingPoints(const TrackTags& tags, const std::string& playerName) const;
  };

  // In MprisQuestions.cpp.
  PlayerAnswer<PlayerRoster::Player> reachablePlayer();
  template <typename Question>
  auto ask(const PlayerRoster::Player& player, Question question) -> decltype(question());
  PlayerAnswer<PropertyValue> get(const PlayerRoster::Player& player, const char* property);
  PlayerAnswer<PropertyMap> getAll(const PlayerRoster::Player& player);
  PlayerAnswer<PropertyMap> getOneByOne(const PlayerRoster::Player& player);
  PlayerAnswer<Done> set(const PlayerRoster::Player& player, const char* property, double value);
  PlayerAnswer<Done> rateInRhythmbox(const PlayerRoster::Player& player,
                                     const std::string& location, int rating);
  PlayerAnswer<PlayerState> stateIn(const PlayerRoster::Player& player,
                                    const PropertyMap& properties);
  PlayerAnswer<PlayerAbilities> abilitiesOf(const PlayerRoster::Player& player);
  void noticeState(const PlayerRoster::Player& player);
  PlayerAnswer<Done> call(const PlayerRoster::Player& player, const char* method);
  PlayerAnswer<Done> play(const PlayerRoster::Player& player);
  PlayerAnswer<TrackMetadata> titled(const PlayerRoster::Player& player, TrackMetadata metadata,
                                     PlayerState state);
  PlayerAnswer<TrackMetadata> trackIn(const PlayerRoster::Player& player,
                                      const PropertyMap& properties);
  PlayerAnswer<TrackMetadata> trackAlone(const PlayerRoster::Player& player);
  PlayerAnswer<TrackMetadata> currentMetadata();
  PlayerAnswer<Described> describedTrack(const PlayerRoster::Player& player);

  const MprisDeadlines deadlines_;
  PlayerRoster roster_;
  TrackFileReader files_{TrackFileReader::kSettling, deadlines_.call};
  WebPictures webPictures_{deadlines_.webPicture, [this] { roster_.lookAgainAtCurrent(); }};
  MprisBus bus_;  // Last: it reports to the roster until it ends.
};

}  // namespace Corvella
