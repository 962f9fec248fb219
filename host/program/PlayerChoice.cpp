#include "host/program/PlayerChoice.h"

#include <QByteArray>
#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "players/embedded/EmbeddedPlayer.h"
#include "players/mpris/MprisPlayer.h"
#include "players/mpris/bus/SessionBus.h"

namespace Corvella {

namespace {

using BusPlayer = PlayerRoster::Player;

std::string_view stateWord(const BusPlayer& player) {
  if (player.silent) return "does not answer";
  switch (player.state) {
    case PlayerState::Playing:
      return "playing";
    case PlayerState::Paused:
      return "paused";
    case PlayerState::Stopped:
      break;
  }
  return "stopped";
}

/// A player as a list shows it, such as "vlc (playing)", by the name that `--player` takes.
std::string nameAndState(const BusPlayer& player) {
  constexpr std::string_view kPrefix = "org.mpris.MediaPlayer2.";
  std::string_view name = player.name;
  if (name.starts_with(kPrefix)) name.remove_prefix(kPrefix.size());
  return std::string(name) + " (" + std::string(stateWord(player)) + ")";
}

/// Whether the user chose by that word. Capitals do not matter, as in the names of players.
bool isWord(const std::string& choice, const char* word) {
  return qstricmp(choice.c_str(), word) == 0;
}

constexpr auto kBusIsSilent = "the session bus does not answer";

/// Says nothing of a player that the user has not named, which is an empty `name`.
std::string whyNotShown(const MprisPlayer& player, const std::string& name) {
  const auto wanted = player.candidates();
  if (!player.busAnswers()) return kBusIsSilent;
  if (name.empty()) return {};
  if (!std::ranges::all_of(wanted, &BusPlayer::silent)) return {};

  auto reason = "the player '" + name + "' " +
                (wanted.empty() ? "is not on the session bus" : "does not answer");
  std::string_view separator = "; there are: ";
  for (const auto& other : MprisPlayer().candidates()) {
    reason += std::string(separator) + nameAndState(other);
    separator = ", ";
  }
  return separator == ", " ? reason : reason + "; there is no player at all";
}

}  // namespace

void giveBusTime() {
  sessionBusAnswers(std::chrono::seconds(2));
}

ChosenPlayer makePlayer(const std::string& choice, const PlayerParts& parts) {
  const auto makeEmbedded = [&] {
    return ChosenPlayer{std::make_unique<EmbeddedPlayer>(parts.clock, parts.bundle,
                                                         embeddedTracks(), &parts.listener)};
  };
  if (isWord(choice, "embedded")) return makeEmbedded();
  const auto name = isWord(choice, "auto") ? std::string() : choice;
  try {
    if (parts.isFirst) requireSessionBus();
  } catch (const std::runtime_error& error) {
    if (!name.empty()) throw;
    parts.notices << "corvella: " << error.what() << "; showing the embedded player\n";
    return makeEmbedded();
  }
  auto onBus = std::make_unique<MprisPlayer>(name, parts.deadlines, &parts.listener);
  const auto& player = *onBus;
  return {std::move(onBus), [&player, name] { return whyNotShown(player, name); }};
}

void printPlayers(std::ostream& output, std::ostream& notices) {
  output << "embedded (built in)\n";
  try {
    requireSessionBus();
    giveBusTime();
    const MprisPlayer players;
    for (const auto& player : players.candidates()) output << nameAndState(player) << "\n";
    if (!players.busAnswers()) throw std::runtime_error(kBusIsSilent);
  } catch (const std::runtime_error& error) {
    notices << "corvella: " << error.what() << "\n";
  }
}

}  // namespace Corvella
