#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "players/mpris/track/RecentTags.h"
#include "players/mpris/track/TimedReads.h"
#include "players/mpris/track/TrackFile.h"

namespace Corvella {

/// Reads the files behind the addresses that players give for their tracks. A file that did not
/// change is not read twice, yet asked each time, so that what it says is never out of date.
/// Addresses that mean no regular file of this machine say nothing, and neither do files that do
/// not answer in time (see `TimedReads`). Any thread, and calls may overlap.
class TrackFileReader {
 public:
  static constexpr std::chrono::seconds kSettling{2};

  /// `settling` is that of `RecentTags`; `patience` is how long a call waits for files, for all of
  /// them together.
  explicit TrackFileReader(std::chrono::nanoseconds settling = kSettling,
                           std::chrono::milliseconds patience = std::chrono::hours{1},
                           std::shared_ptr<TimedReads> reads = std::make_shared<TimedReads>());

  /// The rating in the track's own file, and the lyrics to show: those inside the track's file,
  /// else those in an `.lrc` or `.txt` file beside it, else what the player says. UTF-8 without
  /// time stamps; empty when there are none of at most `kLongestLyrics`.
  TrackTags tags(const std::string& url, std::string_view playersText = {});
  std::string lyrics(const std::string& url, std::string_view playersText);

  /// The picture to show: the one that `artUrl` holds or the file that it means, else the one
  /// inside the track's file. For addresses of the web see `WebPictures`.
  std::optional<std::vector<std::byte>> picture(const std::string& url,
                                                const std::string& artUrl = {});

 private:
  using Paths = std::vector<std::filesystem::path>;

  /// What `read(paths)` tells about the files that an address means; empty when it means none.
  template <typename Read>
  auto readFiles(const std::string& url, TimedReads::Deadline deadline, Read read)
      -> decltype(read(Paths()));

  std::shared_ptr<RecentTags> recent_;  ///< Shared with reads that were given up.
  std::chrono::milliseconds patience_;
  std::shared_ptr<TimedReads> reads_;
};

}  // namespace Corvella
