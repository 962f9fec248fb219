#include "players/mpris/track/TrackFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <exception>
#include <functional>
#include <span>
#include <string_view>
#include <system_error>

#include <aifffile.h>
#include <attachedpictureframe.h>
#include <fileref.h>
#include <flacfile.h>
#include <id3v2tag.h>
#include <mp4coverart.h>
#include <mp4tag.h>
#include <mpegfile.h>
#include <popularimeterframe.h>
#include <tpropertymap.h>
#include <trueaudiofile.h>
#include <wavfile.h>
#include <xiphcomment.h>

#include "platform/base/Utf8.h"
#include "players/mpris/artwork/Artwork.h"
#include "players/mpris/track/GuardedStream.h"
#include "players/mpris/track/TimedLyrics.h"

namespace Corvella {

namespace {

struct Picture {
  bool frontCover;
  TagLib::ByteVector bytes;
};

template <typename FileWithTag>
const TagLib::ID3v2::Tag* id3TagOf(TagLib::File& file) {
  auto* const known = dynamic_cast<FileWithTag*>(&file);
  return known != nullptr && known->hasID3v2Tag() ? known->ID3v2Tag() : nullptr;
}

const TagLib::ID3v2::Tag* id3Tag(TagLib::File& file) {
  if (const auto* tag = id3TagOf<TagLib::MPEG::File>(file)) return tag;
  if (const auto* tag = id3TagOf<TagLib::FLAC::File>(file)) return tag;
  if (const auto* tag = id3TagOf<TagLib::TrueAudio::File>(file)) return tag;
  if (const auto* tag = id3TagOf<TagLib::RIFF::WAV::File>(file)) return tag;
  return dynamic_cast<const TagLib::ID3v2::Tag*>(file.tag());
}

std::string lyricsAmong(const TagLib::PropertyMap& properties) {
  for (const char* name : {"LYRICS", "UNSYNCEDLYRICS"}) {
    const auto found = properties.find(name);
    if (found == properties.end()) continue;
    for (const auto& text : found->second) {
      if (text.size() > kLongestLyrics) continue;
      auto lyrics = repairedUtf8(withoutTimeStamps(text.to8Bit(true)));
      if (!isBlank(lyrics)) return lyrics;
    }
  }
  return {};
}

/// FMPS_RATING holds a decimal number from 0 to 1; absent for anything else.
std::optional<int> ratingOfFraction(const TagLib::String& text) {
  const auto decimal = text.stripWhiteSpace().to8Bit(true);
  const char* const last = decimal.data() + decimal.size();
  double fraction = -1;
  const auto [end, error] = std::from_chars(decimal.data(), last, fraction);
  if (error != std::errc{} || end != last || !(fraction >= 0 && fraction <= 1)) return std::nullopt;
  return static_cast<int>(std::lround(fraction * 100));
}

/// The texts of FMPS_RATING. In an MP4 file its name begins with that of the program that wrote it,
/// so TagLib does not list it among the properties.
TagLib::StringList fractionsIn(TagLib::File& file) {
  const TagLib::String name("FMPS_RATING");
  const auto properties = file.properties();
  if (properties.contains(name)) return properties[name];
  const auto* const mp4 = dynamic_cast<const TagLib::MP4::Tag*>(file.tag());
  if (mp4 == nullptr) return {};
  for (const auto& [key, item] : mp4->itemMap()) {
    const auto words = key.upper().split(":");
    if (key.startsWith("----:") && words.back() == name) return item.toStringList();
  }
  return {};
}

/// The stars that common players mean by a popularimeter's byte, 1..255.
int ratingOfPopularity(int popularity) {
  if (popularity < 64) return 20;
  if (popularity < 128) return 40;
  if (popularity < 192) return 60;
  return popularity < 252 ? 80 : 100;
}

/// The first frame with a rating counts; a frame may hold a play count alone, with 0 as rating.
std::optional<int> popularityIn(const TagLib::ID3v2::Tag& tag) {
  std::optional<int> rating;
  for (const auto* frame : tag.frameList("POPM")) {
    const auto* const meter = dynamic_cast<const TagLib::ID3v2::PopularimeterFrame*>(frame);
    if (meter == nullptr) continue;
    if (meter->rating() > 0) return ratingOfPopularity(meter->rating());
    rating = 0;
  }
  return rating;
}

std::optional<int> ratingIn(TagLib::File& file) {
  for (const auto& text : fractionsIn(file)) {
    if (const auto rating = ratingOfFraction(text)) return rating;
  }
  const auto* const id3 = id3Tag(file);
  return id3 == nullptr ? std::nullopt : popularityIn(*id3);
}

void addPictures(std::vector<Picture>& pictures, const TagLib::List<TagLib::FLAC::Picture*>& list) {
  for (const auto* picture : list) {
    pictures.push_back({picture->type() == TagLib::FLAC::Picture::FrontCover, picture->data()});
  }
}

void addPictures(std::vector<Picture>& pictures, const TagLib::ID3v2::Tag& tag) {
  using Frame = TagLib::ID3v2::AttachedPictureFrame;
  for (const auto* frame : tag.frameList("APIC")) {
    const auto* const picture = dynamic_cast<const Frame*>(frame);
    if (picture == nullptr) continue;
    pictures.push_back({picture->type() == Frame::FrontCover, picture->picture()});
  }
}

void addPictures(std::vector<Picture>& pictures, const TagLib::MP4::Tag& tag) {
  for (const auto& cover : tag.item("covr").toCoverArtList()) {
    pictures.push_back({true, cover.data()});
  }
}

std::vector<Picture> picturesIn(TagLib::File& file) {
  std::vector<Picture> pictures;
  auto* const flac = dynamic_cast<TagLib::FLAC::File*>(&file);
  if (flac != nullptr) addPictures(pictures, flac->pictureList());
  auto* const xiph =
      flac != nullptr ? flac->xiphComment() : dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag());
  if (xiph != nullptr) addPictures(pictures, xiph->pictureList());
  if (const auto* id3 = id3Tag(file)) addPictures(pictures, *id3);
  const auto* const mp4 = dynamic_cast<const TagLib::MP4::Tag*>(file.tag());
  if (mp4 != nullptr) addPictures(pictures, *mp4);
  std::stable_partition(pictures.begin(), pictures.end(), std::mem_fn(&Picture::frontCover));
  return pictures;
}

/// What `read` finds in the audio file; `nothing` when TagLib does not know it or gives up.
template <typename Result>
Result readAudio(const RegularFile& file, Result nothing, Result (*read)(TagLib::File&)) {
  try {
    if (!isHarmlessOgg(file)) return nothing;
    GuardedStream stream(file);
    const TagLib::FileRef reference(&stream, false);
    if (!reference.isNull()) return read(*reference.file());
  } catch (const std::exception&) {
    // TagLib itself throws nothing, but the memory may run out.
  }
  return nothing;
}

}  // namespace

TrackTags readTrackTags(const RegularFile& file) {
  return readAudio<TrackTags>(file, {}, [](TagLib::File& audio) {
    return TrackTags{.lyrics = lyricsAmong(audio.properties()), .rating = ratingIn(audio)};
  });
}

std::optional<std::vector<std::byte>> readEmbeddedPicture(const RegularFile& file) {
  using Bytes = std::optional<std::vector<std::byte>>;
  return readAudio<Bytes>(file, {}, [](TagLib::File& audio) -> Bytes {
    for (const auto& picture : picturesIn(audio)) {
      const auto bytes = std::as_bytes(std::span(picture.bytes.data(), picture.bytes.size()));
      if (looksLikePicture(bytes)) return std::vector(bytes.begin(), bytes.end());
    }
    return std::nullopt;
  });
}

}  // namespace Corvella
