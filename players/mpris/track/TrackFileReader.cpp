#include "players/mpris/track/TrackFileReader.h"

#include <utility>

#include "platform/base/Utf8.h"
#include "players/mpris/artwork/Artwork.h"
#include "players/mpris/track/FileUrl.h"
#include "players/mpris/track/TimedLyrics.h"
#include "players/mpris/track/UrlText.h"

namespace Corvella {

namespace {

using Paths = std::vector<std::filesystem::path>;
using Picture = std::optional<std::vector<std::byte>>;
using ReadTags = TrackTags (*)(const RegularFile&);

TrackTags readLyricsFile(const RegularFile& file) {
  const auto bytes = file.readAll(kLongestLyrics);
  if (!bytes) return {};
  return {.lyrics = withoutTimeStamps(textOfFile(*bytes)), .rating = std::nullopt};
}

/// What `read` tells about the file at `path`; null when there is no such file.
std::shared_ptr<const TrackTags> tagsOfFile(RecentTags& recent, const std::filesystem::path& path,
                                            ReadTags read) {
  const auto file = RegularFile::open(path);
  if (!file) return nullptr;
  if (auto known = recent.find(path, file->identity())) return known;
  auto tags = std::make_shared<const TrackTags>(read(*file));
  if (file->unchanged()) recent.remember(path, file->identity(), tags);
  return tags;
}

TrackTags tagsOfTrack(RecentTags& recent, const Paths& paths) {
  for (const auto& path : paths) {
    if (const auto tags = tagsOfFile(recent, path, &readTrackTags)) return *tags;
  }
  return {};
}

std::string lyricsBesideTrack(RecentTags& recent, const Paths& paths) {
  for (auto path : paths) {
    for (const char* extension : {".lrc", ".txt"}) {
      const auto tags = tagsOfFile(recent, path.replace_extension(extension), &readLyricsFile);
      if (tags && !isBlank(tags->lyrics)) return tags->lyrics;
    }
  }
  return {};
}

TrackTags tagsOfFiles(RecentTags& recent, const Paths& paths) {
  auto tags = tagsOfTrack(recent, paths);
  if (isBlank(tags.lyrics)) tags.lyrics = lyricsBesideTrack(recent, paths);
  return tags;
}

Picture pictureInTrack(const Paths& paths) {
  for (const auto& path : paths) {
    if (const auto file = RegularFile::open(path)) return readEmbeddedPicture(*file);
  }
  return std::nullopt;
}

}  // namespace

TrackFileReader::TrackFileReader(std::chrono::nanoseconds settling,
                                 std::chrono::milliseconds patience,
                                 std::shared_ptr<TimedReads> reads)
    : recent_(std::make_shared<RecentTags>(settling)),
      patience_(patience),
      reads_(std::move(reads)) {}

template <typename Read>
auto TrackFileReader::readFiles(const std::string& url, TimedReads::Deadline deadline, Read read)
    -> decltype(read(Paths())) {
  auto paths = pathsOfFileUrl(url);
  if (paths.empty()) return {};
  return reads_->read(url, deadline, [read, paths = std::move(paths)] { return read(paths); });
}

TrackTags TrackFileReader::tags(const std::string& url, std::string_view playersText) {
  const auto deadline = std::chrono::steady_clock::now() + patience_;
  auto tags = readFiles(url, deadline, [recent = recent_](const Paths& paths) {
    return tagsOfFiles(*recent, paths);
  });
  if (isBlank(tags.lyrics)) {
    tags.lyrics = playersText.size() <= kLongestLyrics ? withoutTimeStamps(playersText) : "";
  }
  if (isBlank(tags.lyrics)) tags.lyrics.clear();
  return tags;
}

std::string TrackFileReader::lyrics(const std::string& url, std::string_view playersText) {
  return tags(url, playersText).lyrics;
}

std::optional<std::vector<std::byte>> TrackFileReader::picture(const std::string& url,
                                                               const std::string& artUrl) {
  if (hasScheme(artUrl, "data")) {
    if (auto told = readArtwork(artUrl)) return told;
  }
  const auto deadline = std::chrono::steady_clock::now() + patience_;
  if (auto told = readFiles(artUrl, deadline, &readPictureFile)) return told;
  return readFiles(url, deadline, &pictureInTrack);
}

}  // namespace Corvella
