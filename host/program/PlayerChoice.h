#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSBundle.h"
#include "players/MusicPlayer.h"
#include "players/PlayerNews.h"
#include "players/mpris/bus/MprisBus.h"

namespace Corvella {

/// A player, and what the command line has to say about it.
struct ChosenPlayer {
  std::unique_ptr<MusicPlayer> player;
  /// Says why the player that the user named cannot be shown just now: nobody of that name is on
  /// the bus, or it does not answer; and who is there. Empty when nothing is wrong. Waits for
  /// answers for some hundred milliseconds at most. Must not be called after the player's end.
  std::function<std::string()> whyNotShown = [] { return std::string(); };
  bool isConnected = true;  ///< See `WidgetSession::isConnected`.
};

/// What a player is made with. The services and the listener, which is told the player's news, must
/// outlive the player.
struct PlayerParts {
  const Clock& clock;
  const NSBundle& bundle;
  const MprisDeadlines& deadlines;
  PlayerNewsListener& listener;
  std::ostream& notices;
  bool mayBeEmbedded;  ///< Whether "auto" is the embedded player where there is no session bus.
};

/// Makes the player that `--player` names: "embedded" or "auto", in capitals or not, or a player on
/// the session bus. Where "auto" becomes the embedded player, `notices` says so. An empty choice
/// makes a player that is not there. Throws `std::runtime_error` when there is no bus.
ChosenPlayer makePlayer(const std::string& choice, const PlayerParts& parts);

/// Writes the names that `--player` takes, a line each, with the state of those on the bus; says on
/// `notices` when there is no bus.
void printPlayers(std::ostream& output, std::ostream& notices);

}  // namespace Corvella
