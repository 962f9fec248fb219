// The questions that `MprisPlayer` puts to a player, and what the answers mean.

#include <string>
#include <utility>
#include <variant>

#include "players/mpris/MprisPlayer.h"

namespace Corvella {

using Player = PlayerRoster::Player;

namespace {

PlayerAbilities abilitiesIn(const PropertyMap& properties) {
  return {.listsVolume = properties.contains("Volume"),
          .listsRating = properties.contains("Rating")};
}

/// Whether a player that is not ready yet, or is broken, answers with other types than it should.
bool isMistyped(const PropertyMap& properties) {
  const auto isOf = [&](const char* name, auto type) {
    const auto* const value = properties.find(name);
    return value == nullptr || std::holds_alternative<std::monostate>(value->content) ||
           std::holds_alternative<decltype(type)>(value->content);
  };
  return !isOf("PlaybackStatus", std::string()) || !isOf("Metadata", PropertyMap());
}

bool describesATrack(const TrackMetadata& metadata) {
  return !metadata.title.empty() || !metadata.url.empty() || metadata.length;
}

/// A property that cannot be read is an empty value, whatever the player said about it.
PlayerAnswer<PropertyValue> orNothing(PlayerAnswer<PropertyValue> value) {
  if (!value && value.failure() == PlayerFailure::NotUnderstood) return PropertyValue();
  return value;
}

}  // namespace

/// The current player, unless it is known not to answer.
PlayerAnswer<Player> MprisPlayer::reachablePlayer() {
  roster_.awaitList(deadlines_.call);
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

PlayerAnswer<PropertyValue> MprisPlayer::get(const Player& player, const char* property) {
  return orNothing(ask(player, [&] { return bus_.get(player.owner, property); }));
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

/// A player that plays nothing is stopped, whatever it says. Nobody tells when a player comes to
/// answer as it should, so one that does not is looked at again.
PlayerAnswer<PlayerState> MprisPlayer::stateIn(const Player& player,
                                               const PropertyMap& properties) {
  if (isMistyped(properties) && roster_.mayAnswerBetter(player.owner)) {
    bus_.lookLater(player.owner);
  }
  auto state = stateOf(properties.find("PlaybackStatus"));
  auto metadata = readTrackMetadata(properties.find("Metadata"));
  if (!describesATrack(metadata)) {
    const auto track = titled(player, std::move(metadata), state);
    if (!track && track.failure() != PlayerFailure::NoSuchObject) return track.failure();
    if (!track) state = PlayerState::Stopped;
  }
  roster_.learn(player.owner, state);
  return state;
}

/// Looks whether a player that plays, as far as is known, has stopped without telling.
void MprisPlayer::noticeState(const Player& player) {
  const auto status = get(player, "PlaybackStatus");
  if (status) roster_.noticeState(player.owner, stateOf(&*status));
}

PlayerAnswer<PlayerAbilities> MprisPlayer::abilitiesOf(const Player& player) {
  if (player.abilities) return *player.abilities;
  const auto properties = getAll(player);
  if (!properties) return properties.failure();
  return abilitiesIn(*properties);
}

PlayerAnswer<Done> MprisPlayer::set(const Player& player, const char* property, double value) {
  return ask(player, [&] { return bus_.set(player.owner, property, value); });
}

PlayerAnswer<Done> MprisPlayer::rateInRhythmbox(const Player& player, const std::string& location,
                                                int rating) {
  constexpr double kPointsOfAStar = 20;
  return ask(player,
             [&] { return bus_.rateInRhythmbox(player.owner, location, rating / kPointsOfAStar); });
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

/// The current track, called like its player where something plays that has no title of its own;
/// `NoSuchObject` when there is none.
PlayerAnswer<TrackMetadata> MprisPlayer::titled(const Player& player, TrackMetadata metadata,
                                                PlayerState state) {
  if (!metadata.title.empty()) return metadata;
  if (!metadata.length && state != PlayerState::Playing) return PlayerFailure::NoSuchObject;
  const auto identity = orNothing(ask(player, [&] { return bus_.identity(player.owner); }));
  if (!identity) return identity.failure();
  metadata.title = textOf(&*identity);
  if (metadata.title.empty()) return PlayerFailure::NoSuchObject;
  return metadata;
}

/// The current track among all properties.
PlayerAnswer<TrackMetadata> MprisPlayer::trackIn(const Player& player,
                                                 const PropertyMap& properties) {
  const auto state = stateOf(properties.find("PlaybackStatus"));
  auto track = titled(player, readTrackMetadata(properties.find("Metadata")), state);
  if (track) roster_.learn(player.owner, state);
  return track;
}

/// The current track from its metadata alone, if they tell enough: one round trip, as a rule.
PlayerAnswer<TrackMetadata> MprisPlayer::trackAlone(const Player& player) {
  const auto value = get(player, "Metadata");
  if (!value) return value.failure();
  auto metadata = readTrackMetadata(&*value);
  // Only a track without title and length needs the state to be one.
  if (!metadata.title.empty() || metadata.length) {
    return titled(player, std::move(metadata), PlayerState::Stopped);
  }
  const auto status = get(player, "PlaybackStatus");
  if (!status) return status.failure();
  return titled(player, std::move(metadata), stateOf(&*status));
}

PlayerAnswer<TrackMetadata> MprisPlayer::currentMetadata() {
  const auto player = reachablePlayer();
  if (!player) return player.failure();
  return trackAlone(*player);
}

/// Reads the metadata alone from a player that is known to keep no rating, else everything.
PlayerAnswer<MprisPlayer::Described> MprisPlayer::describedTrack(const Player& player) {
  if (player.abilities && !player.abilities->listsRating) {
    auto track = trackAlone(player);
    if (!track) return track.failure();
    return Described{*std::move(track), std::nullopt};
  }
  const auto properties = getAll(player);
  if (!properties) return properties.failure();
  auto track = trackIn(player, *properties);
  if (!track) return track.failure();
  return Described{*std::move(track), numberOf(properties->find("Rating"))};
}

}  // namespace Corvella
