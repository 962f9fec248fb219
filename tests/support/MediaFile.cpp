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
#include <tpropertymap.h>
#include <xiphcomment.h>

#include "tests/support/Process.h"

namespace Corvella {

namespace {

TagLib::StringList tagText(const std::string& text) {
  return TagLib::String(text, TagLib::String::UTF8);
}

TagLib::ByteVector tagBytes(const std::string& bytes) {
  return {bytes.data(), static_cast<unsigned>(bytes.size())};
}

/// A FLAC::Picture or an AttachedPictureFrame, which the tag that it is added to will own.
template <typename Picture>
Picture* makePicture(const std::string& bytes, typename Picture::Type type) {
  auto picture = std::make_unique<Picture>();
  picture->setType(type);
  picture->setMimeType("image/png");
  if constexpr (requires { picture->setPicture(tagBytes(bytes)); }) {
    picture->setPicture(tagBytes(bytes));
  } else {
    picture->setData(tagBytes(bytes));
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

void replaceCover(TagLib::File& file, const std::string& cover) {
  using Frame = TagLib::ID3v2::AttachedPictureFrame;
  using TagLib::MP4::CoverArt;
  if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file)) {
    auto& tag = *mpeg->ID3v2Tag(true);
    tag.removeFrames("APIC");
    tag.addFrame(makePicture<Frame>(pictureBytes("artist"), Frame::Artist));
    tag.addFrame(makePicture<Frame>(cover, Frame::FrontCover));
  } else if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file)) {
    flac->removePictures();
    addPictures(*flac, cover);
  } else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag())) {
    xiph->removeAllPictures();
    addPictures(*xiph, cover);
  } else if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag())) {
    TagLib::MP4::CoverArtList covers;
    covers.append(CoverArt(CoverArt::PNG, tagBytes(cover)));
    mp4->setItem("covr", covers);
  }
}

void replaceProperties(TagLib::File& file, const MediaTags& tags) {
  TagLib::PropertyMap properties;
  if (!tags.lyrics.empty()) properties.insert("LYRICS", tagText(tags.lyrics));
  if (!tags.rating.empty()) properties.insert("FMPS_RATING", tagText(tags.rating));
  file.setProperties(properties);
  auto* const mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag());
  if (mp4 == nullptr || tags.rating.empty()) return;
  mp4->setItem("----:com.apple.iTunes:FMPS_Rating", tagText(tags.rating));
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
  TagLib::FileRef file(path.c_str(), false);
  if (file.isNull()) throw std::runtime_error("not an audio file: " + path.string());
  replaceProperties(*file.file(), tags);
  if (!tags.cover.empty()) replaceCover(*file.file(), tags.cover);
  if (!file.save()) throw std::runtime_error("tags not written: " + path.string());
}

std::string pictureBytes(const std::string& note) {
  return "\x89PNG\r\n\x1A\n" + note;
}

std::string urlOf(const std::filesystem::path& path) {
  return "file://" + path.string();
}

}  // namespace Corvella
