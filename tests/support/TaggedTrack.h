#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

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
  Process ffmpeg({"ffmpeg",
                  "-y",
                  "-v",
                  "error",
                  "-f",
                  "lavfi",
                  "-i",
                  "sine=duration=" + std::to_string(track.seconds),
                  "-i",
                  track.cover.string(),
                  "-map",
                  "0",
                  "-map",
                  "1",
                  "-c:a",
                  "flac",
                  "-c:v",
                  "copy",
                  "-disposition:v",
                  "attached_pic",
                  "-metadata",
                  "title=" + track.title,
                  "-metadata",
                  "artist=" + track.artist,
                  "-metadata",
                  "album=" + track.album,
                  "-metadata",
                  "LYRICS=" + track.lyrics,
                  path.string()});
  if (ffmpeg.wait(std::chrono::seconds(60)) != 0) throw std::runtime_error(ffmpeg.errors());
}

}  // namespace Corvella
