#pragma once

#include <cstdint>

namespace Corvella {

/// What happened to the current player. News carry no values: whoever shows the player asks it
/// again, by scripts.
enum class PlayerNews : std::uint8_t {
  Changed,    ///< Its state, track, artwork, volume or rating, or another player is to be shown.
  Halted,     ///< The same of a player that does not play; it may be on its way to another track.
  Left,       ///< The current player is no longer there.
  Described,  ///< `MusicPlayer::description` gives something else now.
  Commanded,  ///< A script has told it to do something, and it has agreed.
  Refused,    ///< A script has told it to do something, and it has not obeyed.
};

/// Is told the news of a player. Called on any thread, also while the player is being made or
/// ends; must not block, nor call the player.
class PlayerNewsListener {
 public:
  virtual ~PlayerNewsListener() = default;

  virtual void playerNews(PlayerNews news) = 0;

  /// Whether it wants to know more than that the player has left. While it does not, nobody is
  /// asked anything on its behalf. Any thread.
  virtual bool isListening() const { return true; }
};

}  // namespace Corvella
