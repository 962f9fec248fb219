#include "players/mpris/TrackFileReader.h"

#include "players/mpris/FileUrl.h"
#include "players/mpris/LyricsText.h"
#include "players/mpris/Utf8.h"

namespace Corvella {

namespace {

constexpr std::size_t largestLyricsFile = std::size_t{1} << 20U;

TrackTags readLyricsFile(const RegularFile& file) {
  const auto bytes = file.readAll(largestLyricsFile);
  if (!bytes) return {};
  return {.lyrics = withoutTimeStamps(textOfFile(*bytes)), .rating = std::nullopt};
}

}  // namespace

TrackTags TrackFileReader::tags(const std::string& url) {
  const auto tags = tagsOfTrack(url);
  return tags ? *tags : TrackTags{};
}

std::optional<std::vector<std::byte>> TrackFileReader::picture(const std::string& url) {
  for (const auto& path : pathsOfFileUrl(url)) {
    if (const auto file = RegularFile::open(path)) return readEmbeddedPicture(*file);
  }
  return std::nullopt;
}

std::string TrackFileReader::lyrics(const std::string& url, std::string_view playersText) {
  const auto tags = tagsOfTrack(url);
  if (tags && !isBlank(tags->lyrics)) return tags->lyrics;
  auto beside = lyricsBesideTrack(url);
  if (!beside.empty()) return beside;
  auto said = withoutTimeStamps(playersText);
  return isBlank(said) ? std::string() : said;
}

std::shared_ptr<const TrackTags> TrackFileReader::tagsOfFile(const std::filesystem::path& path,
                                                             ReadTags read) {
  const auto file = RegularFile::open(path);
  if (!file) return nullptr;
  if (auto known = recent_.find(path, file->identity())) return known;
  auto tags = std::make_shared<const TrackTags>(read(*file));
  if (file->unchanged()) recent_.remember(path, file->identity(), tags);
  return tags;
}

std::shared_ptr<const TrackTags> TrackFileReader::tagsOfTrack(const std::string& url) {
  for (const auto& path : pathsOfFileUrl(url)) {
    if (auto tags = tagsOfFile(path, &readTrackTags)) return tags;
  }
  return nullptr;
}

std::string TrackFileReader::lyricsBesideTrack(const std::string& url) {
  for (auto path : pathsOfFileUrl(url)) {
    for (const char* extension : {".lrc", ".txt"}) {
      const auto tags = tagsOfFile(path.replace_extension(extension), &readLyricsFile);
      if (tags && !isBlank(tags->lyrics)) return tags->lyrics;
    }
  }
  return {};
}

}  // namespace Corvella
