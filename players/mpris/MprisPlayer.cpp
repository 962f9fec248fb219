#include "players/mpris/MprisPlayer.h"

#include <cmath>
#include <optional>
#include <utility>

#include "players/mpris/Artwork.h"

namespace Corvella {

using Player = PlayerRoster::Player;

namespace {

PlayerAbilities abilitiesIn(const PropertyMap& properties) {
  return {.listsVolume = properties.contains("Volume"),
          .listsRating = properties.contains("Rating")};
}

bool describesATrack(const TrackMetadata& metadata) {
  return !metadata.title.empty() || !metadata.url.empty() || metadata.length;
}

}  // namespace

/// The current track's metadata, and the rating that the player keeps outside of it.
struct MprisPlayer::Described {
  TrackMetadata metadata;
  std::optional<double> rating;
};

MprisPlayer::MprisPlayer(std::string pinnedName) : roster_(std::move(pinnedName)), bus_(roster_) {}

std::vector<Player> MprisPlayer::players() const {
  roster_.awaitList(MprisBus::kDeadline);
  return roster_.players();
}

bool MprisPlayer::running() {
  roster_.awaitList(MprisBus::kDeadline);
  return roster_.current().has_value();
}

PlayerAnswer<PlayerState> MprisPlayer::playerState() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto properties = getAll(*player);
  if (!properties) return properties.failure();
  return learnedState(*player, *properties);
}

PlayerAnswer<std::optional<std::chrono::microseconds>> MprisPlayer::playerPosition() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto value = get(*player, "Position");
  if (!value) return value.failure();
  return positionOf(&*value);
}

PlayerAnswer<int> MprisPlayer::soundVolume() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto value = get(*player, "Volume");
  if (!value) return value.failure();
  return volumeOf(&*value);
}

PlayerAnswer<Done> MprisPlayer::setSoundVolume(int volume) {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto abilities = abilitiesOf(*player);
  if (!abilities) return abilities.failure();
  if (!abilities->listsVolume) return PlayerFailure::NotUnderstood;
  return ask(*player, [&] { return bus_.set(player->owner, "Volume", volume / 100.0); });
}

PlayerAnswer<Track> MprisPlayer::currentTrack() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  auto described = describedTrack(*player);
  if (!described) return described.failure();
  auto& metadata = described->metadata;
  if (metadata.title.empty()) return PlayerFailure::NoSuchObject;

  auto tags = files_.tags(metadata.url);
  const auto rating = described->rating ? described->rating : metadata.userRating;
  return Track{.name = std::move(metadata.title),
               .artist = std::move(metadata.artist),
               .album = std::move(metadata.album),
               .lyrics = files_.lyrics(metadata.url, metadata.asText),
               .rating = rating ? ratingPoints(*rating) : tags.rating.value_or(0),
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
  if (auto artwork = readArtwork(metadata->artUrl)) return *std::move(artwork);
  if (auto artwork = files_.picture(metadata->url)) return *std::move(artwork);
  return PlayerFailure::NoSuchObject;
}

PlayerAnswer<Done> MprisPlayer::setRatingOfCurrentTrack(int rating) {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto properties = getAll(*player);
  if (!properties) return properties.failure();
  if (readTrackMetadata(properties->find("Metadata")).title.empty()) {
    return PlayerFailure::NoSuchObject;
  }
  if (!properties->contains("Rating")) return PlayerFailure::NotUnderstood;
  return ask(*player, [&] { return bus_.set(player->owner, "Rating", rating / 100.0); });
}

PlayerAnswer<Done> MprisPlayer::perform(PlaybackRequest request) {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
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

/// The current player, unless it is known not to answer.
PlayerAnswer<Player> MprisPlayer::reachablePlayer() {
  roster_.awaitList(MprisBus::kDeadline);
  auto player = roster_.current();
  if (!player) return PlayerFailure::NotRunning;
  if (player->silent) return PlayerFailure::TimedOut;
  return *std::move(player);
}

/// Puts a question to the bus; a player that misses the deadline is probed from then on.
template <typename Question>
auto MprisPlayer::ask(const Player& player, Question question) -> decltype(question()) {
  auto answer = question();
  const bool late = !answer && answer.failure() == PlayerFailure::TimedOut;
  if (late && roster_.fellSilent(player.owner)) bus_.probe(player.owner);
  return answer;
}

/// A property that cannot be read is an empty value, whatever the player said about it.
PlayerAnswer<PropertyValue> MprisPlayer::get(const Player& player, const char* property) {
  auto value = ask(player, [&] { return bus_.get(player.owner, property); });
  if (!value && value.failure() == PlayerFailure::NotUnderstood) return PropertyValue();
  return value;
}

/// All properties; of a player that does not list them, those that a track and a state need.
PlayerAnswer<PropertyMap> MprisPlayer::getAll(const Player& player) {
  auto properties = ask(player, [&] { return bus_.getAll(player.owner); });
  if (!properties && properties.failure() == PlayerFailure::NotUnderstood) {
    properties = getOneByOne(player);
  }
  if (properties) roster_.learn(player.owner, abilitiesIn(*properties));
  return properties;
}

PlayerAnswer<PropertyMap> MprisPlayer::getOneByOne(const Player& player) {
  std::vector<Property> properties;
  for (const auto* name : {"PlaybackStatus", "Metadata"}) {
    auto value = get(player, name);
    if (!value) return value.failure();
    properties.push_back({name, *std::move(value)});
  }
  return PropertyMap(std::move(properties));
}

/// A player that plays nothing is stopped, whatever it says.
PlayerState MprisPlayer::learnedState(const Player& player, const PropertyMap& properties) {
  const bool track = describesATrack(readTrackMetadata(properties.find("Metadata")));
  const auto state = track ? stateOf(properties.find("PlaybackStatus")) : PlayerState::Stopped;
  roster_.learn(player.owner, state);
  return state;
}

PlayerAnswer<PlayerAbilities> MprisPlayer::abilitiesOf(const Player& player) {
  if (player.abilities) return *player.abilities;
  const auto properties = getAll(player);
  if (!properties) return properties.failure();
  return abilitiesIn(*properties);
}

PlayerAnswer<Done> MprisPlayer::call(const Player& player, const char* method) {
  return ask(player, [&] { return bus_.call(player.owner, method); });
}

PlayerAnswer<Done> MprisPlayer::play(const Player& player) {
  const auto status = get(player, "PlaybackStatus");
  if (!status) return status.failure();
  // Several players start the track again when they are told to play while they play.
  if (stateOf(&*status) == PlayerState::Playing) return Done();
  return call(player, "Play");
}

/// One round trip: the metadata alone from a player that is known to keep no rating, else
/// everything.
PlayerAnswer<MprisPlayer::Described> MprisPlayer::describedTrack(const Player& player) {
  if (player.abilities && !player.abilities->listsRating) {
    const auto metadata = get(player, "Metadata");
    if (!metadata) return metadata.failure();
    return Described{readTrackMetadata(&*metadata), std::nullopt};
  }
  const auto properties = getAll(player);
  if (!properties) return properties.failure();
  learnedState(player, *properties);
  return Described{readTrackMetadata(properties->find("Metadata")),
                   numberOf(properties->find("Rating"))};
}

PlayerAnswer<TrackMetadata> MprisPlayer::currentMetadata() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  const auto value = get(*player, "Metadata");
  if (!value) return value.failure();
  auto metadata = readTrackMetadata(&*value);
  if (metadata.title.empty()) return PlayerFailure::NoSuchObject;
  return metadata;
}

}  // namespace Corvella
