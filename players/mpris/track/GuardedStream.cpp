#include "players/mpris/track/GuardedStream.h"

#include <cstddef>
#include <utility>

#include <fcntl.h>
#include <id3v2extendedheader.h>
#include <id3v2frame.h>
#include <id3v2header.h>
#include <id3v2synchdata.h>

namespace Corvella {

namespace {

using TagLib::ByteVector;
namespace ID3v2 = TagLib::ID3v2;

/// Each box of an MP4 file takes a read, and some 160 bytes of stack.
constexpr int kMostReads = 10'000;
/// For all that is read of a file: its tags hold a few pictures at most.
constexpr std::size_t kMostBytes = std::size_t{16} << 20U;
constexpr int kMostFrames = 10'000;

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

/// Steps from frame to frame as TagLib does. Chapters get a name that TagLib does not know, so that
/// it does not look into them. False when the tag must not be read at all.
bool makeHarmless(ByteVector& content, const ID3v2::Header& tag) {
  const auto headerSize = frameHeaderSize(tag.majorVersion());
  int frames = 0;
  for (auto at = startOfFrames(content, tag); at + headerSize < content.size();) {
    const auto start = static_cast<unsigned>(at);
    if (content.at(start) == '\0') return true;  // The padding behind the last frame.
    const AnyFrame::Header header(content.mid(start), tag.majorVersion());
    if (++frames > kMostFrames || header.compression()) return false;
    if (header.frameID() == "CHAP" || header.frameID() == "CTOC") {
      // TagLib gathers the bytes itself, so that a new name could not be handed on.
      if (isSpread(tag)) return false;
      content[static_cast<int>(start)] = 'X';
    }
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

}  // namespace

GuardedStream::GuardedStream(const RegularFile& file)
    : FileStream(::fcntl(file.descriptor(), F_DUPFD_CLOEXEC, 0), true),
      readsLeft_(kMostReads),
      bytesLeft_(kMostBytes) {}

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
  if (block.size() == ID3v2::Header::size()) lastBlock_ = block;
  return block;
}

}  // namespace Corvella
