#include "players/mpris/MprisPlayer.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "players/mpris/track/UrlText.h"

namespace Corvella {

using namespace std::chrono_literals;
using Player = PlayerRoster::Player;

namespace {

std::string textOr(std::string text, const char* otherwise) {
  return text.empty() ? otherwise : std::move(text);
}

/// The track's length as far as a difference of it is seen. Some players guess it at first, correct
/// it while they play, and tell nobody.
std::string wholeSeconds(const TrackMetadata& metadata) {
  return std::to_string(
      std::chrono::round<std::chrono::seconds>(metadata.length.value_or(0us)).count());
}

}  // namespace

/// A track that its player does not know a rating of may have one in its own file.
int MprisPlayer::Described::ratingPoints(const TrackTags& tags,
                                         const std::string& playerName) const {
  if (rating) return Corvella::ratingPoints(*rating);
  const auto& said = metadata.userRating;
  if (said && meansRating(*said, playerName)) return Corvella::ratingPoints(*said);
  if (tags.rating) return *tags.rating;
  return said ? Corvella::ratingPoints(*said) : 0;
}

MprisPlayer::MprisPlayer(const std::string& pinnedName, const MprisDeadlines& deadlines,
                         PlayerNewsListener* listener)
    : deadlines_(deadlines), roster_(pinnedName, listener), bus_(roster_, deadlines) {}

std::vector<Player> MprisPlayer::candidates() const {
  roster_.awaitList(deadlines_.call);
  return roster_.candidates();
}

bool MprisPlayer::running() {
  roster_.awaitList(deadlines_.call);
  return roster_.chooseCurrent().has_value();
}

PlayerAnswer<PlayerState> MprisPlayer::playerState() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto properties = getAll(*player);
  if (!properties) return properties.failure();
  return stateIn(*player, *properties);
}

PlayerAnswer<std::optional<std::chrono::microseconds>> MprisPlayer::playerPosition() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto value = get(*player, "Position");
  if (!value) return value.failure();
  const auto position = positionOf(&*value);
  if (position && roster_.standsStill(player->owner, *position)) noticeState(*player);
  // Some players that have stopped refuse to say where, which would leave the last position shown.
  if (!position && player->state == PlayerState::Stopped) return std::optional(0us);
  return position;
}

PlayerAnswer<int> MprisPlayer::soundVolume() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto value = get(*player, "Volume");
  if (!value) return value.failure();
  const int volume = volumeOf(&*value);
  roster_.noticeVolume(player->owner, volume);
  return volume;
}

PlayerAnswer<Done> MprisPlayer::setSoundVolume(int volume) {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto abilities = abilitiesOf(*player);
  if (!abilities) return abilities.failure();
  if (!abilities->listsVolume) return PlayerFailure::NotUnderstood;
  roster_.expectChange(player->owner);
  return set(*player, "Volume", volume / 100.0);
}

PlayerAnswer<Track> MprisPlayer::currentTrack() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  auto described = describedTrack(*player);
  if (!described) return described.failure();
  auto& metadata = described->metadata;
  auto tags = files_.tags(metadata.url, metadata.asText);
  const int rating = described->ratingPoints(tags, player->name);
  roster_.noticeTrack(player->owner, metadata.artist + '\n' + metadata.album + '\n' +
                                         std::to_string(rating) + '\n' + wholeSeconds(metadata));
  return Track{.name = std::move(metadata.title),
               .artist = textOr(std::move(metadata.artist), "Unknown Artist"),
               .album = textOr(std::move(metadata.album), "Unknown Album"),
               .lyrics = std::move(tags.lyrics),
               .rating = rating,
               .finish = metadata.length};
}

PlayerAnswer<std::string> MprisPlayer::lyricsOfCurrentTrack() {
  const auto metadata = currentMetadata();
  if (!metadata) return metadata.failure();
  return files_.lyrics(metadata->url, metadata->asText);
}

PlayerAnswer<std::vector<std::byte>> MprisPlayer::artworkOfCurrentTrack() {
  const auto metadata = currentMetadata();
  if (!metadata) return metadata.failure();
  const auto& artUrl = metadata->artUrl;
  if (hasScheme(artUrl, "http") || hasScheme(artUrl, "https")) {
    if (auto picture = webPictures_.picture(artUrl)) return *std::move(picture);
  }
  return files_.picture(metadata->url, artUrl).value_or(std::vector<std::byte>());
}

PlayerAnswer<Done> MprisPlayer::setRatingOfCurrentTrack(int rating) {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto properties = getAll(*player);
  if (!properties) return properties.failure();
  const auto track = trackIn(*player, *properties);
  if (!track) return track.failure();
  roster_.expectChange(player->owner);
  if (properties->contains("Rating")) return set(*player, "Rating", rating / 100.0);
  if (!isRhythmbox(player->name)) return PlayerFailure::NotUnderstood;
  return rateInRhythmbox(*player, track->url, rating);
}

PlayerAnswer<Done> MprisPlayer::perform(PlaybackRequest request) {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  roster_.expectChange(player->owner);
  switch (request) {
    case PlaybackRequest::Play:
      return play(*player);
    case PlaybackRequest::Pause:
      return call(*player, "Pause");
    case PlaybackRequest::Previous:
      return call(*player, "Previous");
    case PlaybackRequest::Next:
      return call(*player, "Next");
  }
  return PlayerFailure::NotUnderstood;
}

void MprisPlayer::raise() {
  if (const auto player = roster_.current()) bus_.raise(player->owner);
}

}  // namespace Corvella
