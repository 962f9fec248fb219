#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <attachedpictureframe.h>
#include <fileref.h>
#include <flacfile.h>
#include <id3v2tag.h>
#include <mp4coverart.h>
#include <mp4tag.h>
#include <mpegfile.h>
#include <popularimeterframe.h>
#include <tpropertymap.h>
#include <xiphcomment.h>

#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {

/// What players keep in the tags of a file.
struct MediaTags {
  std::string lyrics{};
  std::string rating{};  ///< FMPS_RATING, as it is written.
  /// The front cover, behind another picture where the format knows several kinds.
  std::string cover{};
  std::string otherLyrics{};  ///< Under the other name of lyrics, which TagLib 1 keeps out of MP4.
  std::vector<int> popularities{};  ///< Those of ID3, so in an mp3 only.
};

/// Bytes that start like a PNG file, with `note` behind, and none of which is 0.
inline std::string pictureBytes(const std::string& note) {
  return "\x89PNG\r\n\x1A\n" + note;
}

inline TagLib::StringList tagText(const std::string& text) {
  return TagLib::String(text, TagLib::String::UTF8);
}

/// Has `add` take over the two pictures: FLAC::Picture or AttachedPictureFrame.
template <typename Picture, typename Set, typename Add>
void addPictures(const std::string& cover, Set setBytes, Add add) {
  if (cover.empty()) return;
  for (const auto type : {Picture::Artist, Picture::FrontCover}) {
    const auto bytes = type == Picture::FrontCover ? cover : pictureBytes("artist");
    auto picture = std::make_unique<Picture>();
    picture->setType(type);
    picture->setMimeType("image/png");
    (*picture.*setBytes)(bytes.c_str());
    add(picture.release());
  }
}

inline void replaceFrames(TagLib::ID3v2::Tag& tag, const MediaTags& tags) {
  tag.removeFrames("APIC");
  tag.removeFrames("POPM");
  using Picture = TagLib::ID3v2::AttachedPictureFrame;
  addPictures<Picture>(tags.cover, &Picture::setPicture, [&](auto* one) { tag.addFrame(one); });
  for (const int popularity : tags.popularities) {
    auto frame = std::make_unique<TagLib::ID3v2::PopularimeterFrame>();
    frame->setEmail(std::to_string(popularity));
    frame->setRating(popularity);
    tag.addFrame(frame.release());
  }
}

/// Replaces the tags of an audio file. Throws std::runtime_error when they cannot be written.
inline void writeTags(const std::filesystem::path& path, const MediaTags& tags) {
  TagLib::FileRef reference(path.c_str(), false);
  if (reference.isNull()) throw std::runtime_error("not an audio file: " + path.string());
  auto& file = *reference.file();
  using Picture = TagLib::FLAC::Picture;
  TagLib::PropertyMap properties;
  for (const auto& [name, text] : {std::pair("LYRICS", tags.lyrics),
                                   {"UNSYNCEDLYRICS", tags.otherLyrics},
                                   {"FMPS_RATING", tags.rating}}) {
    if (!text.empty()) properties.insert(name, tagText(text));
  }
  file.setProperties(properties);
  if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file)) {
    replaceFrames(*mpeg->ID3v2Tag(true), tags);
  } else if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file)) {
    flac->removePictures();
    addPictures<Picture>(tags.cover, &Picture::setData, [&](auto* one) { flac->addPicture(one); });
  } else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag())) {
    xiph->removeAllPictures();
    addPictures<Picture>(tags.cover, &Picture::setData, [&](auto* one) { xiph->addPicture(one); });
  } else if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag())) {
    constexpr auto rating = "----:com.apple.iTunes:FMPS_Rating";
    mp4->removeItem("covr");
    mp4->removeItem(rating);
    if (!tags.cover.empty()) {
      const TagLib::MP4::CoverArt cover(TagLib::MP4::CoverArt::PNG, tags.cover.c_str());
      mp4->setItem("covr", TagLib::MP4::CoverArtList().append(cover));
    }
    if (!tags.rating.empty()) mp4->setItem(rating, tagText(tags.rating));
  }
  if (!file.save()) throw std::runtime_error("tags not written: " + path.string());
}

/// Makes a short audio file "track.`format`" in a folder, and tells where it lies. Throws
/// std::runtime_error with ffmpeg's own words when it fails.
inline std::filesystem::path makeTrack(const TemporaryFolder& folder, const MediaTags& tags,
                                       const std::string& format = "mp3") {
  auto path = folder.path() / ("track." + format);
  Process ffmpeg({"ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", "sine=duration=0.5",
                  "-map_metadata", "-1", "-y", path.string()});
  if (ffmpeg.wait() != 0) throw std::runtime_error("ffmpeg: " + ffmpeg.errors());
  writeTags(path, tags);
  return path;
}

/// Bytes as text, so that tests can write down what they expect.
inline std::optional<std::string> textOf(const std::optional<std::vector<std::byte>>& bytes) {
  if (!bytes) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

/// Where players say that the file is.
inline std::string urlOf(const std::filesystem::path& path) {
  return "file://" + path.string();
}

}  // namespace Corvella
