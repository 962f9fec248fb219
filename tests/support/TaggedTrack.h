#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/Process.h"

namespace Corvella {

/// What `makeTrack` writes into a file.
struct TaggedTrack {
  std::string title;
  std::string artist;
  std::string album;
  std::string lyrics;
  std::filesystem::path cover;  ///< A picture file.
  int seconds = 30;
};

/// Makes a FLAC file with a tone, tags and a cover. Throws std::runtime_error with ffmpeg's own
/// words when it fails.
inline void makeTrack(const std::filesystem::path& path, const TaggedTrack& track) {
  const auto tone = "sine=duration=" + std::to_string(track.seconds);
  std::vector<std::string> command{"ffmpeg", "-v",   "error", "-f",        "lavfi",
                                   "-i",     tone,   "-i",    track.cover, "-map",
                                   "0",      "-map", "1",     "-c:v",      "copy"};
  for (const auto& tag : {"title=" + track.title, "artist=" + track.artist, "album=" + track.album,
                          "LYRICS=" + track.lyrics}) {
    command.insert(command.end(), {"-metadata", tag});
  }
  command.insert(command.end(), {"-disposition:v", "attached_pic", path});
  Process ffmpeg(command);
  if (ffmpeg.wait() != 0) throw std::runtime_error(ffmpeg.errors());
}

}  // namespace Corvella
