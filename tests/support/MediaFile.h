#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace Corvella {

/// The extensions of all kinds of audio files that can be made here.
inline const std::vector<std::string> kAudioFormats{"mp3", "flac", "ogg", "opus", "m4a"};

/// What players keep in the tags of a file.
struct MediaTags {
  std::string lyrics;
  std::string rating;  ///< FMPS_RATING, as it is written.
  /// The front cover, behind another picture where the format knows several kinds.
  std::string cover;
};

/// Makes a short audio file "track.`format`" in a folder, and tells where it lies. Throws
/// std::runtime_error with ffmpeg's own words when it fails.
std::filesystem::path makeTrack(const TemporaryFolder& folder, const MediaTags& tags,
                                const std::string& format = "mp3");

/// Replaces the tags of an audio file. Throws std::runtime_error when they cannot be written.
void writeTags(const std::filesystem::path& path, const MediaTags& tags);

/// Bytes that start like a PNG file, with `note` behind.
std::string pictureBytes(const std::string& note);

/// Where players say that the file is.
std::string urlOf(const std::filesystem::path& path);

}  // namespace Corvella
