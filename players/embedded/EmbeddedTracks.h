#pragma once

#include <string>
#include <vector>

#include "players/MusicPlayer.h"

namespace Corvella {

/// A track of the embedded player.
struct EmbeddedTrack {
  Track track;
  /// The picture's resource is "covers/NAME.png" with this name; empty when the track has no
  /// artwork.
  std::string cover;
};

/// The built-in tracks. Invented ones, chosen so that between them they show whatever a display has
/// to cope with: several scripts, no lyrics and very long ones, long titles, a track without
/// artwork.
std::vector<EmbeddedTrack> embeddedTracks();

}  // namespace Corvella
