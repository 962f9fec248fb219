#pragma once

#include <cstddef>

#include <taglib.h>
#include <tfilestream.h>

#include "platform/base/RegularFile.h"

namespace Corvella {

/// An open file as TagLib reads it, without what lets a small file exhaust the stack or the memory
/// of its reader. TagLib up to 2.0 has these defects:
/// - It follows the nested boxes of MP4 and the nested chapters of ID3v2 by recursion, however deep
///   they are. Some 200,000 boxes or 20,000 chapters overflow a stack of 8 MB.
/// - It unpacks a compressed frame of ID3v2 whatever its size: a tag of 65 KB takes 300 MB.
/// - It needs up to half a kilobyte for the smallest entry of a tag of any kind, or for a part of
///   an entry: a tag of 15 MB takes 5 GB.
///
/// A file or a tag that goes beyond a bound seems to end. Used by one thread.
class GuardedStream : public TagLib::FileStream {
 public:
  /// Reads `file` through a descriptor of its own.
  explicit GuardedStream(const RegularFile& file);

#if TAGLIB_MAJOR_VERSION >= 2
  using Length = std::size_t;
#else
  using Length = unsigned long;
#endif
  TagLib::ByteVector readBlock(Length length) override;

 private:
  int readsLeft_;
  std::size_t bytesLeft_;
  TagLib::ByteVector lastBlock_;  ///< Kept when it is as short as the header of a tag.
};

/// Whether an Ogg file has no more comments than TagLib may read; true of any other file. The
/// stream above cannot tell, because comments lie scattered over the pages of such a file. Any
/// thread.
bool isHarmlessOgg(const RegularFile& file);

}  // namespace Corvella
