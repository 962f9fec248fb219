#include "players/mpris/track/RecentTags.h"

#include <algorithm>
#include <utility>

namespace Corvella {

namespace {

// Enough for four tracks, each with a file of lyrics beside it.
constexpr std::size_t kMostEntries = 8;

}  // namespace

std::shared_ptr<const TrackTags> RecentTags::find(const std::filesystem::path& path,
                                                  const FileIdentity& identity) {
  const std::scoped_lock lock(mutex_);
  const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return entry.identity == identity && entry.path == path;
  });
  if (found == entries_.end()) return nullptr;
  entries_.splice(entries_.begin(), entries_, found);
  return found->tags;
}

void RecentTags::remember(const std::filesystem::path& path, const FileIdentity& identity,
                          std::shared_ptr<const TrackTags> tags) {
  const std::scoped_lock lock(mutex_);
  entries_.remove_if([&](const Entry& entry) { return entry.path == path; });
  if (isSettling(identity)) return;
  entries_.push_front({path, identity, std::move(tags)});
  if (entries_.size() > kMostEntries) entries_.pop_back();
}

bool RecentTags::isSettling(const FileIdentity& identity) const {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::abs(now - std::chrono::nanoseconds{identity.changed}) < settling_;
}

}  // namespace Corvella
