#include "players/mpris/GuardedStream.h"

#include <cstddef>
#include <cstdint>

#include <fcntl.h>
#include <id3v2synchdata.h>

namespace Corvella {

namespace {

// TagLib reads the boxes of an MP4 file by recursion, one read and some 160 bytes of stack per
// level.
constexpr int mostReads = 10'000;
// Tags are read in one block; the largest that may count hold a few pictures.
constexpr unsigned long mostBytes = 128UL << 20U;
// Chapter frames of ID3v2 may hold chapter frames, read by recursion at some 500 bytes of stack per
// level.
constexpr int mostChapters = 2'000;

/// The number that four bytes spell with `bits` bits each; too few bytes spell one that is too
/// large.
std::size_t numberAt(const TagLib::ByteVector& block, unsigned at, unsigned bits) {
  std::size_t number = 0;
  for (unsigned index = 0; index < 4; ++index) {
    if (at + index >= block.size()) return SIZE_MAX;
    number = number << bits | static_cast<unsigned char>(block[static_cast<int>(at + index)]);
  }
  return number;
}

/// Whether a frame can start at `at`, rather than a word of some text: its size fits, as ID3v2.3 or
/// as ID3v2.4 writes it.
bool isFrame(const TagLib::ByteVector& block, unsigned at) {
  return numberAt(block, at + 4, 8) <= block.size() || numberAt(block, at + 4, 7) <= block.size();
}

/// Whether the frame at `at` is stored compressed, and so may hide more frames. ID3v2.3 and ID3v2.4
/// mark that by different bits of the second flag byte.
bool isCompressed(const TagLib::ByteVector& block, unsigned at) {
  return at + 9 < block.size() &&
         (static_cast<unsigned char>(block[static_cast<int>(at + 9)]) & 0x88U) != 0;
}

bool nestsTooDeeply(const TagLib::ByteVector& block) {
  int chapters = 0;
  for (const TagLib::ByteVector name : {"CHAP", "CTOC"}) {
    for (int found = block.find(name); found >= 0;) {
      const auto at = static_cast<unsigned>(found);
      if (isFrame(block, at) && (++chapters > mostChapters || isCompressed(block, at))) return true;
      found = block.find(name, at + 1);
    }
  }
  return false;
}

/// Frame headers may be spread by the bytes that ID3v2.3 puts in against false synchronisation, the
/// names of frames never are.
bool isHarmful(const TagLib::ByteVector& block) {
  if (block.find("CHAP") < 0 && block.find("CTOC") < 0) return false;
  return nestsTooDeeply(block) || nestsTooDeeply(TagLib::ID3v2::SynchData::decode(block));
}

}  // namespace

GuardedStream::GuardedStream(const RegularFile& file)
    : FileStream(::fcntl(file.descriptor(), F_DUPFD_CLOEXEC, 0), true),
      readsLeft_(mostReads),
      bytesLeft_(mostBytes) {}

TagLib::ByteVector GuardedStream::readBlock(unsigned long length) {
  if (readsLeft_ == 0 || length > bytesLeft_) return {};
  --readsLeft_;
  auto block = FileStream::readBlock(length);
  bytesLeft_ -= block.size();
  return isHarmful(block) ? TagLib::ByteVector() : block;
}

}  // namespace Corvella
