#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/RegularFile.h"

namespace Corvella {

/// No lyrics above this size are read, in bytes.
inline constexpr std::size_t kLongestLyrics = std::size_t{1} << 20U;

/// What a track's own file says beyond what its player says.
struct TrackTags {
  std::string lyrics;         ///< Ready to be shown: UTF-8 without time stamps.
  std::optional<int> rating;  ///< 0..100
};

/// Reads the tags of an audio file, whose format is told from its content; a file that is broken or
/// of no known format has none. Raises nothing; any thread.
TrackTags readTrackTags(const RegularFile& file);

/// The picture file inside an audio file, the front cover before any other; absent when there is
/// none or its bytes are no picture. Raises nothing; any thread.
std::optional<std::vector<std::byte>> readEmbeddedPicture(const RegularFile& file);

}  // namespace Corvella
