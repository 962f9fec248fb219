#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace Corvella {

/// What players keep in the tags of a file.
struct MediaTags {
  std::string lyrics{};
  std::string rating{};  ///< FMPS_RATING, as it is written.
  /// The front cover, behind another picture where the format knows several kinds.
  std::string cover{};
  std::string otherLyrics{};        ///< Under the other name of lyrics, but in MP4, which has one.
  std::vector<int> popularities{};  ///< Those of ID3, so in an mp3 only.
};

/// Makes a short audio file "track.`format`" in a folder, and tells where it lies. Throws
/// std::runtime_error with ffmpeg's own words when it fails.
std::filesystem::path makeTrack(const TemporaryFolder& folder, const MediaTags& tags,
                                const std::string& format = "mp3");

/// Replaces the tags of an audio file. Throws std::runtime_error when they cannot be written.
void writeTags(const std::filesystem::path& path, const MediaTags& tags);

/// Bytes that start like a PNG file, with `note` behind.
inline std::string pictureBytes(const std::string& note) {
  return "\x89PNG\r\n\x1A\n" + note;
}

/// Bytes as text, so that tests can write down what they expect.
inline std::optional<std::string> textOf(const std::optional<std::vector<std::byte>>& bytes) {
  if (!bytes) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

/// Where players say that the file is.
inline std::string urlOf(const std::filesystem::path& path) {
  return "file://" + path.string();
}

}  // namespace Corvella
