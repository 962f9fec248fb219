#pragma once

#include <cstdint>

namespace Corvella {

/// What is to be read from the player.
enum class FetchRequestType : std::uint8_t { Artwork, Lyrics, PlayerPosition, Rating, Volume };

/// The case's ordinal in the order of declaration.
constexpr std::int64_t hashValue(FetchRequestType type) {
  return static_cast<std::int64_t>(type);
}

}  // namespace Corvella
