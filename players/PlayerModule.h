#pragma once

#include <memory>
#include <string>
#include <vector>

#include "players/MusicPlayer.h"

namespace Corvella {

/// A kind of players that lives in a module of its own, to be loaded when such a player is needed:
/// the program then starts without the libraries that stand behind it.
struct PlayerModule {
  struct ListedPlayer {
    std::string name;
    PlayerState state = PlayerState::Stopped;
    bool silent = false;  ///< Does not answer.
  };

  /// Makes a player: the named one, or with an empty name whichever is current. Throws
  /// `std::runtime_error` when there can be none.
  std::unique_ptr<MusicPlayer> (*makePlayer)(const std::string& name);
  /// The players that there are, by name. Throws `std::runtime_error` when there can be none.
  std::vector<ListedPlayer> (*listPlayers)();

  /// The function that a module exports, and its name.
  using Entry = const PlayerModule*();
  static constexpr auto kEntryName = "corvellaPlayerModule";
};

}  // namespace Corvella
