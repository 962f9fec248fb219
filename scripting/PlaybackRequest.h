#pragma once

#include <cstdint>

namespace Corvella {

/// What the player is to do.
enum class PlaybackRequest : std::uint8_t { Play, Pause, Previous, Next };

/// The case's ordinal in the order of declaration.
constexpr std::int64_t hashValue(PlaybackRequest request) {
  return static_cast<std::int64_t>(request);
}

}  // namespace Corvella
