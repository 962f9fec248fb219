#pragma once

#include <functional>
#include <string>

#include "model/SongController.h"
#include "players/PlayerDescription.h"

namespace Corvella {

/// A song as one JSON object, for scripts and status bars.
struct SongJson {
  std::string line;             ///< The object on one line, ended by a line feed.
  std::string withoutPosition;  ///< The same but for the position, which changes all the time.
};

/// Asks the player, which `describe` describes once it has been asked. The keys of the object:
/// - "title", "artist", "album": texts; null without a current track
/// - "state": "playing", "paused" or "stopped"; null when the player does not say
/// - "position", "length": seconds; null where they are not known
/// - "rating", "volume": 0..100; null where they are not known
/// - "player": what the player calls itself; null when there is none
/// - "lyrics", if asked for: a text, empty when there are none
SongJson songJson(const SongController& song, bool withLyrics,
                  const std::function<PlayerDescription()>& describe);

}  // namespace Corvella
