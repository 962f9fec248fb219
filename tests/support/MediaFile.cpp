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

using TagLib::ByteVector;
using TagLib::StringList;

TagLib::String tagText(const std::string& text) {
  return {text, TagLib::String::UTF8};
}

ByteVector tagBytes(const std::string& bytes) {
  return {bytes.data(), static_cast<unsigned>(bytes.size())};
}

std::unique_ptr<TagLib::FLAC::Picture> xiphPicture(const std::string& bytes,
                                                   TagLib::FLAC::Picture::Type type) {
  auto picture = std::make_unique<TagLib::FLAC::Picture>();
  picture->setType(type);
  picture->setMimeType("image/png");
  picture->setData(tagBytes(bytes));
  return picture;
}

// Tags own the pictures and frames that are added to them.

template <typename Owner>
void addXiphCover(Owner& owner, const std::string& cover) {
  using Picture = TagLib::FLAC::Picture;
  owner.addPicture(xiphPicture(pictureBytes("artist"), Picture::Artist).release());
  owner.addPicture(xiphPicture(cover, Picture::FrontCover).release());
}

void addId3Picture(TagLib::ID3v2::Tag& tag, const std::string& bytes,
                   TagLib::ID3v2::AttachedPictureFrame::Type type) {
  auto frame = std::make_unique<TagLib::ID3v2::AttachedPictureFrame>();
  frame->setType(type);
  frame->setMimeType("image/png");
  frame->setPicture(tagBytes(bytes));
  tag.addFrame(frame.release());
}

void replaceCover(TagLib::File& file, const std::string& cover) {
  using Frame = TagLib::ID3v2::AttachedPictureFrame;
  using TagLib::MP4::CoverArt;
  if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file)) {
    mpeg->ID3v2Tag(true)->removeFrames("APIC");
    addId3Picture(*mpeg->ID3v2Tag(true), pictureBytes("artist"), Frame::Artist);
    addId3Picture(*mpeg->ID3v2Tag(true), cover, Frame::FrontCover);
  } else if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file)) {
    flac->removePictures();
    addXiphCover(*flac, cover);
  } else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag())) {
    xiph->removeAllPictures();
    addXiphCover(*xiph, cover);
  } else if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag())) {
    TagLib::MP4::CoverArtList covers;
    covers.append(CoverArt(CoverArt::PNG, tagBytes(cover)));
    mp4->setItem("covr", covers);
  }
}

void replaceProperties(TagLib::File& file, const MediaTags& tags) {
  TagLib::PropertyMap properties;
  if (!tags.lyrics.empty()) properties.insert("LYRICS", StringList(tagText(tags.lyrics)));
  if (!tags.rating.empty()) properties.insert("FMPS_RATING", StringList(tagText(tags.rating)));
  file.setProperties(properties);
  auto* const mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag());
  if (mp4 == nullptr || tags.rating.empty()) return;
  mp4->setItem("----:com.apple.iTunes:FMPS_Rating", StringList(tagText(tags.rating)));
}

}  // namespace

const std::vector<AudioFormat>& audioFormats() {
  static const std::vector<AudioFormat> formats = {{"mp3", "libmp3lame", "mp3"},
                                                   {"flac", "flac", "flac"},
                                                   {"ogg", "libvorbis", "ogg"},
                                                   {"opus", "libopus", "opus"},
                                                   {"m4a", "aac", "ipod"}};
  return formats;
}

void makeAudio(const std::filesystem::path& path, const AudioFormat& format) {
  Process ffmpeg({"ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", "sine=duration=0.5",
                  "-map_metadata", "-1", "-c:a", format.encoder, "-f", format.container, "-y",
                  path.string()});
  if (ffmpeg.wait() != 0) throw std::runtime_error("ffmpeg: " + ffmpeg.errors());
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

}  // namespace Corvella
