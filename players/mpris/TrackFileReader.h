#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "players/mpris/RecentTags.h"
#include "players/mpris/TrackFile.h"

namespace Corvella {

/// Reads the files behind the addresses that players give for their tracks. A file that did not
/// change is not read twice, yet asked each time, so that what it says is never out of date.
/// Addresses that mean no regular file of this machine say nothing. Any thread, and calls may
/// overlap.
class TrackFileReader {
 public:
  explicit TrackFileReader(std::chrono::nanoseconds settling = std::chrono::seconds{2})
      : recent_(settling) {}

  TrackTags tags(const std::string& url);

  /// The picture file inside the track's file.
  std::optional<std::vector<std::byte>> picture(const std::string& url);

  /// The lyrics to show: those inside the track's file, else those in an `.lrc` or `.txt` file
  /// beside it, else what the player says. UTF-8 without time stamps; empty when there are none.
  std::string lyrics(const std::string& url, std::string_view playersText);

 private:
  using ReadTags = TrackTags (*)(const RegularFile&);

  /// What `read` tells about the file at `path`; null when there is no such file.
  std::shared_ptr<const TrackTags> tagsOfFile(const std::filesystem::path& path, ReadTags read);
  std::shared_ptr<const TrackTags> tagsOfTrack(const std::string& url);
  std::string lyricsBesideTrack(const std::string& url);

  RecentTags recent_;
};

}  // namespace Corvella
