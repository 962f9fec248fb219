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
  /// Says why no player can be shown just now: the bus does not answer, or nobody of the name that
  /// the user gave is on it or answers; and who is there. Empty when nothing is wrong. Waits for
  /// answers for some hundred milliseconds at most. Must not be called after the player's end.
  std::function<std::string()> whyNotShown = [] { return std::string(); };
};

/// What a player is made with. The services and the listener, which is told the player's news, must
/// outlive the player.
struct PlayerParts {
  const Clock& clock;
  const NSBundle& bundle;
  const MprisDeadlines& deadlines;
  PlayerNewsListener& listener;
  std::ostream& notices;
  bool isFirst;  ///< The program's first player; later ones wait for a bus that has gone.
};

/// Waits for the answer of the session bus, for two seconds at most. The questions to players have
/// less time, because a window waits for them; who shows a player once and ends needs the answer.
void giveBusTime();

/// Makes the player that `--player` names: "embedded" or "auto", in capitals or not, or a player on
/// the session bus. Where there is no bus for the first player, "auto" becomes the embedded one and
/// `notices` says so; for a player with a name, throws `std::runtime_error`.
ChosenPlayer makePlayer(const std::string& choice, const PlayerParts& parts);

/// Writes the names that `--player` takes, a line each, with the state of those on the bus; says on
/// `notices` when there is no bus.
void printPlayers(std::ostream& output, std::ostream& notices);

}  // namespace Corvella
