#include "players/mpris/KnownPlayer.h"

#include <algorithm>
#include <variant>

#include "players/AsciiText.h"
#include "players/mpris/track/TrackMetadata.h"

namespace Corvella {

namespace {

/// Takes over a yes or no; what is neither leaves things as they are.
void readFlag(const PropertyMap& properties, std::string_view name, bool& flag) {
  const auto* const value = properties.find(name);
  if (value == nullptr) return;
  if (const auto* const said = std::get_if<bool>(&value->content)) flag = *said;
}

}  // namespace

bool KnownPlayer::isCalled(std::string_view name) const {
  return std::ranges::any_of(names,
                             [name](const auto& own) { return sameText(shortName(own), name); });
}

bool KnownPlayer::isCopyOf(std::string_view name) const {
  return std::ranges::any_of(names, [name](std::string_view own) {
    return sameText(shortName(own.substr(0, own.find(".instance"))), name);
  });
}

int KnownPlayer::rank() const {
  if (silent) return 0;
  switch (state) {
    case PlayerState::Playing:
      return 3;
    case PlayerState::Paused:
      return 2;
    case PlayerState::Stopped:
      break;
  }
  return 1;
}

bool KnownPlayer::isBetweenTracks(std::chrono::milliseconds longest) const {
  return stoppedPlaying && !silent && std::chrono::steady_clock::now() - *stoppedPlaying < longest;
}

PlayerDescription KnownPlayer::describe() const {
  auto all = description;
  const auto& name = *names.begin();
  all.name = shortName(name);
  all.keepsRating |= isRhythmbox(name);
  if (all.identity.empty()) all.identity = all.name;
  all.silent = silent;
  all.playing = state == PlayerState::Playing;
  return all;
}

bool KnownPlayer::changeState(PlayerState newState) {
  if (state == newState) return false;
  stoppedPlaying.reset();
  if (state == PlayerState::Playing && newState == PlayerState::Stopped) {
    stoppedPlaying = std::chrono::steady_clock::now();
  }
  state = newState;
  return true;
}

void KnownPlayer::takeAbilities(const PropertyMap& properties) {
  readFlag(properties, "CanControl", description.canControl);
  readFlag(properties, "CanGoNext", description.canGoNext);
  readFlag(properties, "CanGoPrevious", description.canGoPrevious);
  readFlag(properties, "CanPlay", description.canPlay);
  readFlag(properties, "CanPause", description.canPause);
}

void KnownPlayer::takeIdentity(const PropertyMap& properties) {
  if (const auto* identity = properties.find("Identity")) description.identity = textOf(identity);
  readFlag(properties, "CanRaise", description.canRaise);
}

void KnownPlayer::forgetAnswers() {
  volume.reset();
  track.reset();
}

std::string_view shortName(std::string_view name) {
  constexpr std::string_view kPrefix = "org.mpris.MediaPlayer2.";
  if (sameText(name.substr(0, kPrefix.size()), kPrefix)) name.remove_prefix(kPrefix.size());
  return name;
}

}  // namespace Corvella
