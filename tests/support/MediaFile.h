#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Corvella {

/// A kind of audio file, by the names that ffmpeg has for it.
struct AudioFormat {
  std::string name;  ///< The usual extension, without its dot.
  std::string encoder;
  std::string container;
};

/// MP3, FLAC, Ogg Vorbis, Opus and MP4.
const std::vector<AudioFormat>& audioFormats();

/// What players keep in the tags of a file.
struct MediaTags {
  std::string lyrics;
  std::string rating;  ///< FMPS_RATING, as it is written.
  /// The front cover, behind another picture where the format knows several kinds.
  std::string cover;
};

/// Makes a short untagged audio file. Throws std::runtime_error with ffmpeg's own words when it
/// fails.
void makeAudio(const std::filesystem::path& path, const AudioFormat& format);

/// Replaces the tags of an audio file that has its usual extension. Throws std::runtime_error when
/// they cannot be written.
void writeTags(const std::filesystem::path& path, const MediaTags& tags);

/// Bytes that start like a PNG file, with `note` behind.
std::string pictureBytes(const std::string& note);

}  // namespace Corvella
