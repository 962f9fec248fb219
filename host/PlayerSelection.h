#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSBundle.h"
#include "players/MusicPlayer.h"

namespace Corvella {

/// Makes the player that `--player` names: "embedded", "auto" or a player on the session bus.
/// "auto" falls back to the embedded player where there is no session bus, and says so on
/// `notices`. Throws `std::runtime_error` when a player is named and there is no bus. The services
/// must outlive the player.
std::unique_ptr<MusicPlayer> selectPlayer(const std::string& choice, const Clock& clock,
                                          const NSBundle& bundle, std::ostream& notices);

/// Writes the names that `--player` takes, a line each, with the state of those on the bus; says on
/// `notices` when there is no bus.
void listPlayers(std::ostream& output, std::ostream& notices);

}  // namespace Corvella
