#include "host/PlayerSelection.h"

#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "host/PlayerModules.h"
#include "host/ProgramFolders.h"
#include "players/embedded/EmbeddedPlayer.h"

namespace Corvella {

namespace {

/// The players on the session bus.
const PlayerModule& mprisModule() {
  return loadPlayerModule(ProgramFolders::modules() / "corvella-mpris.so");
}

std::string_view wordFor(const PlayerModule::ListedPlayer& player) {
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
  if (choice != "auto") return mprisModule().makePlayer(choice);
  try {
    return mprisModule().makePlayer({});
  } catch (const std::runtime_error& error) {
    notices << "corvella: " << error.what() << "; showing the embedded player\n";
    return std::make_unique<EmbeddedPlayer>(clock, bundle);
  }
}

void listPlayers(std::ostream& output, std::ostream& notices) {
  output << "embedded (built in)\n";
  try {
    for (const auto& player : mprisModule().listPlayers()) {
      output << player.name << " (" << wordFor(player) << ")\n";
    }
  } catch (const std::runtime_error& error) {
    notices << "corvella: " << error.what() << "\n";
  }
}

}  // namespace Corvella
