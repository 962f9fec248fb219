#include "players/mpris/RecentTags.h"

#include <algorithm>
#include <utility>

namespace Corvella {

namespace {

// A track, the lyrics beside it, and the same again for three more.
constexpr std::size_t mostEntries = 8;
constexpr std::size_t longestLyrics = std::size_t{1} << 20U;

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
  if (!worthKeeping(identity, *tags)) return;
  entries_.push_front({path, identity, std::move(tags)});
  if (entries_.size() > mostEntries) entries_.pop_back();
}

bool RecentTags::worthKeeping(const FileIdentity& identity, const TrackTags& tags) const {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto age = std::chrono::abs(now - std::chrono::nanoseconds{identity.changed});
  return age >= settling_ && tags.lyrics.size() <= longestLyrics;
}

}  // namespace Corvella
