#include "host/PlayerSelection.h"

#include <stdexcept>
#include <string_view>

#include "players/embedded/EmbeddedPlayer.h"
#include "players/mpris/MprisPlayer.h"

namespace Corvella {

namespace {

std::string_view withoutPrefix(std::string_view name) {
  constexpr std::string_view prefix = "org.mpris.MediaPlayer2.";
  return name.starts_with(prefix) ? name.substr(prefix.size()) : name;
}

std::string_view wordFor(const PlayerRoster::Player& player) {
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

}  // namespace

std::unique_ptr<MusicPlayer> selectPlayer(const std::string& choice, const Clock& clock,
                                          const NSBundle& bundle, std::ostream& notices) {
  if (choice == "embedded") return std::make_unique<EmbeddedPlayer>(clock, bundle);
  if (choice != "auto") return std::make_unique<MprisPlayer>(choice);
  try {
    return std::make_unique<MprisPlayer>();
  } catch (const std::runtime_error& error) {
    notices << "corvella: " << error.what() << "; showing the embedded player\n";
    return std::make_unique<EmbeddedPlayer>(clock, bundle);
  }
}

void listPlayers(std::ostream& output, std::ostream& notices) {
  output << "embedded (built in)\n";
  try {
    for (const auto& player : MprisPlayer().players()) {
      output << withoutPrefix(player.name) << " (" << wordFor(player) << ")\n";
    }
  } catch (const std::runtime_error& error) {
    notices << "corvella: " << error.what() << "\n";
  }
}

}  // namespace Corvella
