#pragma once

#include <string>

namespace Corvella {

/// Who a player is and what it is able to do, as far as it has told. What is not known yet counts
/// as possible, but for raising its window.
struct PlayerDescription {
  std::string name;      ///< What `--player` takes for it; empty when there is no player.
  std::string identity;  ///< What the player calls itself in front of users; of one that is not
                         ///< there, what the user calls it, or empty.
  bool known = true;     ///< False before the first look at the players, when nobody can tell.
  bool silent = false;   ///< It has missed a deadline and has not answered since.
  bool playing = false;
  bool canRaise = false;  ///< Whether `MusicPlayer::raise` brings up its window.
  bool keepsRating = true;
  bool keepsVolume = true;
  bool canControl = true;  ///< Whether it obeys any command.
  bool canGoNext = true;
  bool canGoPrevious = true;
  bool canPlay = true;   ///< Whether it goes on when it is paused or stopped.
  bool canPause = true;  ///< Whether it pauses when it plays.

  bool exists() const { return !name.empty(); }
  bool operator==(const PlayerDescription&) const = default;
};

}  // namespace Corvella
