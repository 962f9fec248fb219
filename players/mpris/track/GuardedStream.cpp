#include "players/mpris/track/GuardedStream.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include <fcntl.h>
#include <id3v2extendedheader.h>
#include <id3v2frame.h>
#include <id3v2header.h>
#include <id3v2synchdata.h>
#include <oggfile.h>

#include "players/mpris/track/TagEntries.h"

namespace Corvella {

namespace {

using TagLib::ByteVector;
namespace ID3v2 = TagLib::ID3v2;

/// Each box of an MP4 file takes a read, and some 160 bytes of stack.
constexpr int kMostReads = 10'000;
/// For all that is read of a file: its tags hold a few pictures at most.
constexpr std::size_t kMostBytes = std::size_t{12} << 20U;
/// For all frames of a tag but those that hold one long thing.
constexpr std::size_t kMostBytesOfLists = std::size_t{128} << 10U;

/// Opens up the header of a frame, which TagLib keeps for its own classes of frames.
class AnyFrame : public ID3v2::Frame {
 public:
  using Frame::Header;
};

/// ID3v2.2 has names and sizes of three bytes each; later versions have four of each, and two bytes
/// of flags.
constexpr std::size_t frameHeaderSize(unsigned int majorVersion) {
  return majorVersion < 3 ? 6 : 10;
}

/// Whether the bytes in the tag were spread, so that no player takes them for sound. Later versions
/// spread the bytes of single frames and leave their headers as they are.
bool isSpread(const ID3v2::Header& tag) {
  return tag.unsynchronisation() && tag.majorVersion() <= 3;
}

std::size_t startOfFrames(const ByteVector& content, const ID3v2::Header& tag) {
  if (!tag.extendedHeader()) return 0;
  ID3v2::ExtendedHeader extended;
  extended.setData(content);
  return extended.size() <= content.size() ? extended.size() : 0;
}

/// Whether such a frame holds one long thing. TagLib takes the others apart into lists.
bool holdsOneThing(const ByteVector& frame) {
  constexpr std::array kNames{"APIC", "PIC",  "USLT", "ULT",  "COMM", "COM",
                              "PRIV", "GEOB", "GEO",  "CHAP", "CTOC"};
  return std::any_of(kNames.begin(), kNames.end(), [&](const char* name) { return frame == name; });
}

/// Steps from frame to frame as TagLib does. Chapters get a name that TagLib does not know, so that
/// it does not look into them. False when the tag must not be read at all.
bool makeHarmless(ByteVector& content, const ID3v2::Header& tag) {
  const auto headerSize = frameHeaderSize(tag.majorVersion());
  int frames = 0;
  std::size_t bytesOfLists = 0;
  for (auto at = startOfFrames(content, tag); at + headerSize < content.size();) {
    const auto start = static_cast<unsigned>(at);
    if (content.at(start) == '\0') return true;  // The padding behind the last frame.
    const AnyFrame::Header header(content.mid(start), tag.majorVersion());
    if (++frames > kMostEntries || header.compression()) return false;
    if (header.frameID() == "CHAP" || header.frameID() == "CTOC") {
      // TagLib gathers the bytes itself, so that a new name could not be handed on.
      if (isSpread(tag)) return false;
      content[static_cast<int>(start)] = 'X';
    }
    if (!holdsOneThing(header.frameID())) bytesOfLists += header.frameSize();
    if (bytesOfLists > kMostBytesOfLists) return false;
    at += headerSize + header.frameSize();
  }
  return true;
}

/// The content of a tag as TagLib may read it; nothing when TagLib must not.
ByteVector harmlessContent(ByteVector content, const ID3v2::Header& tag) {
  if (isSpread(tag)) {
    auto gathered = ID3v2::SynchData::decode(content);
    return makeHarmless(gathered, tag) ? content : ByteVector();
  }
  return makeHarmless(content, tag) ? content : ByteVector();
}

/// Whether a block of a file must not be read after `header`, which was read before it.
bool hasTooManyEntries(const ByteVector& block, const ByteVector& header) {
  constexpr char kFlacComment = 4;
  if (header.startsWith("APETAGEX")) return hasTooManyApeItems(block);
  if (header.size() == 4 && (header[0] & 0x7F) == kFlacComment) return hasTooManyXiphFields(block);
  if (block.startsWith("INFO")) return hasTooManyInfoChunks(block);
  const bool isMp4Entry = block.containsAt("data", 4) || block.containsAt("mean", 4);
  return isMp4Entry && hasTooManyMp4Values(block);
}

/// Gathers the packets of an Ogg file, which lie scattered over its pages.
class OggPackets : public TagLib::Ogg::File {
 public:
  explicit OggPackets(TagLib::IOStream* stream) : File(stream) {}
  TagLib::Tag* tag() const override { return nullptr; }
  TagLib::AudioProperties* audioProperties() const override { return nullptr; }
  bool save() override { return false; }
};

}  // namespace

bool isHarmlessOgg(const RegularFile& file) {
  constexpr unsigned kMostHeaders = 10;
  GuardedStream stream(file);
  if (stream.readBlock(4) != "OggS") return true;
  OggPackets packets(&stream);
  // FLAC has as many headers as it likes, the last of which has a mark.
  const bool isFlac = packets.packet(0).startsWith(
      "\x7F"
      "FLAC");
  for (unsigned index = 1; index < kMostHeaders; ++index) {
    const auto packet = packets.packet(index);
    if (packet.isEmpty()) return index > 1;  // A short piece of music has few packets.
    // Comments start behind a mark, which differs between Speex, FLAC, Vorbis and Opus.
    for (const unsigned mark : {0U, 4U, 7U, 8U}) {
      if (hasTooManyXiphFields(packet, mark)) return false;
    }
    if (isFlac && (packet[0] & 0x80) != 0) return true;
  }
  return !isFlac;
}

GuardedStream::GuardedStream(const RegularFile& file)
    : FileStream(::fcntl(file.descriptor(), F_DUPFD_CLOEXEC, 0), true),
      readsLeft_(kMostReads),
      bytesLeft_(kMostBytes) {
  // All descriptors of a file stand at the same place, where an earlier stream may have left them.
  FileStream::seek(0);
}

TagLib::ByteVector GuardedStream::readBlock(Length length) {
  if (readsLeft_ == 0 || length > bytesLeft_) return {};
  --readsLeft_;
  auto block = FileStream::readBlock(length);
  bytesLeft_ -= block.size();
  // A tag is read right after its header. TagLib checks the mark "ID3" of a header nowhere, because
  // the chunks of WAV and AIFF files have names of their own.
  const auto last = std::exchange(lastBlock_, {});
  if (last.size() == ID3v2::Header::size()) {
    const ID3v2::Header tag(last);
    if (tag.tagSize() == length) return harmlessContent(block, tag);
  }
  if (hasTooManyEntries(block, last)) return {};
  constexpr std::size_t kLongestHeader = 32;
  if (block.size() <= kLongestHeader) lastBlock_ = block;
  return block;
}

}  // namespace Corvella
