#pragma once

#include <tfilestream.h>

#include "players/mpris/RegularFile.h"

namespace Corvella {

/// An open file as TagLib reads it, with bounds: past them the file seems to end. They keep a file
/// that was made to do harm from exhausting the stack, the memory or the time of its reader; tracks
/// as players write them stay far below. Used by one thread.
class GuardedStream : public TagLib::FileStream {
 public:
  /// Reads `file` through a descriptor of its own.
  explicit GuardedStream(const RegularFile& file);

  TagLib::ByteVector readBlock(unsigned long length) override;

 private:
  int readsLeft_;
  unsigned long bytesLeft_;
};

}  // namespace Corvella
