#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>

#include "platform/base/RegularFile.h"
#include "players/mpris/track/TrackFile.h"

namespace Corvella {

/// Remembers what the files read last held, each as long as the file stays the same. Any thread.
class RecentTags {
 public:
  /// A file that changed within `settling` of being read is not remembered: the clock of a file
  /// system is coarse, so a further change could leave no trace in the file's times.
  explicit RecentTags(std::chrono::nanoseconds settling = std::chrono::seconds{2})
      : settling_(settling) {}

  /// What the file at `path` held; null when it is not remembered or has another identity by now.
  std::shared_ptr<const TrackTags> find(const std::filesystem::path& path,
                                        const FileIdentity& identity);

  /// Keeps `tags` in place of what was known about `path`, and forgets the file that was asked for
  /// the longest time ago.
  void remember(const std::filesystem::path& path, const FileIdentity& identity,
                std::shared_ptr<const TrackTags> tags);

 private:
  struct Entry {
    std::filesystem::path path;
    FileIdentity identity;
    std::shared_ptr<const TrackTags> tags;
  };

  /// Whether the file changed so lately that a further change might not show.
  bool isSettling(const FileIdentity& identity) const;

  std::chrono::nanoseconds settling_;
  std::mutex mutex_;
  std::list<Entry> entries_;  ///< The one asked for last comes first.
};

}  // namespace Corvella
