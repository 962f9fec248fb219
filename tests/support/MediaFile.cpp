#include "tests/support/MediaFile.h"

#include <memory>
#include <stdexcept>

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

namespace Corvella {

namespace {

TagLib::StringList tagText(const std::string& text) {
  return TagLib::String(text, TagLib::String::UTF8);
}

/// A FLAC::Picture or an AttachedPictureFrame, which the tag that it is added to will own.
template <typename Picture>
Picture* makePicture(const std::string& bytes, typename Picture::Type type) {
  auto picture = std::make_unique<Picture>();
  const TagLib::ByteVector data(bytes.data(), static_cast<unsigned>(bytes.size()));
  picture->setType(type);
  picture->setMimeType("image/png");
  if constexpr (requires { picture->setPicture(data); }) {
    picture->setPicture(data);
  } else {
    picture->setData(data);
  }
  return picture.release();
}

/// To a FLAC file or a Xiph comment.
template <typename Owner>
void addPictures(Owner& owner, const std::string& cover) {
  using Picture = TagLib::FLAC::Picture;
  owner.addPicture(makePicture<Picture>(pictureBytes("artist"), Picture::Artist));
  owner.addPicture(makePicture<Picture>(cover, Picture::FrontCover));
}

void replaceFrames(TagLib::ID3v2::Tag& tag, const MediaTags& tags) {
  using Picture = TagLib::ID3v2::AttachedPictureFrame;
  tag.removeFrames("APIC");
  tag.removeFrames("POPM");
  if (!tags.cover.empty()) {
    tag.addFrame(makePicture<Picture>(pictureBytes("artist"), Picture::Artist));
    tag.addFrame(makePicture<Picture>(tags.cover, Picture::FrontCover));
  }
  for (const int popularity : tags.popularities) {
    auto frame = std::make_unique<TagLib::ID3v2::PopularimeterFrame>();
    frame->setEmail(std::to_string(popularity));
    frame->setRating(popularity);
    tag.addFrame(frame.release());
  }
}

}  // namespace

std::filesystem::path makeTrack(const TemporaryFolder& folder, const MediaTags& tags,
                                const std::string& format) {
  auto path = folder.path() / ("track." + format);
  Process ffmpeg({"ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", "sine=duration=0.5",
                  "-map_metadata", "-1", "-y", path.string()});
  if (ffmpeg.wait() != 0) throw std::runtime_error("ffmpeg: " + ffmpeg.errors());
  writeTags(path, tags);
  return path;
}

void writeTags(const std::filesystem::path& path, const MediaTags& tags) {
  TagLib::FileRef reference(path.c_str(), false);
  if (reference.isNull()) throw std::runtime_error("not an audio file: " + path.string());
  auto& file = *reference.file();
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
    if (!tags.cover.empty()) addPictures(*flac, tags.cover);
  } else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag())) {
    xiph->removeAllPictures();
    if (!tags.cover.empty()) addPictures(*xiph, tags.cover);
  } else if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag())) {
    constexpr auto rating = "----:com.apple.iTunes:FMPS_Rating";
    mp4->removeItem("covr");
    mp4->removeItem(rating);
    if (!tags.cover.empty()) {
      const TagLib::ByteVector cover(tags.cover.data(), static_cast<unsigned>(tags.cover.size()));
      mp4->setItem("covr", TagLib::MP4::CoverArtList().append({TagLib::MP4::CoverArt::PNG, cover}));
    }
    if (!tags.rating.empty()) mp4->setItem(rating, tagText(tags.rating));
  }
  if (!file.save()) throw std::runtime_error("tags not written: " + path.string());
}

std::string pictureBytes(const std::string& note) {
  return "\x89PNG\r\n\x1A\n" + note;
}

std::optional<std::string> textOf(const std::optional<std::vector<std::byte>>& bytes) {
  if (!bytes) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

std::string urlOf(const std::filesystem::path& path) {
  return "file://" + path.string();
}

}  // namespace Corvella
