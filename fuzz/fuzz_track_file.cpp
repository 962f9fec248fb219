// Audio files of any format that TagLib reads: their lyrics, rating and picture, or none. How much
// memory a file may take is checked by libFuzzer itself, see tools/fuzz.

#include <cstddef>
#include <cstdint>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/Check.h"
#include "platform/base/FileDescriptor.h"
#include "platform/base/RegularFile.h"
#include "platform/base/Utf8.h"
#include "players/mpris/artwork/Artwork.h"
#include "players/mpris/track/TrackFile.h"

namespace Corvella {
namespace {

void checkFile(const RegularFile& file) {
  const auto tags = readTrackTags(file);
  check(isUtf8(tags.lyrics), "lyrics are UTF-8");
  // A character that is not UTF-8 becomes one of three bytes.
  check(tags.lyrics.size() <= 4 * kLongestLyrics, "lyrics keep their bound");
  check(!tags.rating || (*tags.rating >= 0 && *tags.rating <= 100), "a rating is on its scale");
  const auto picture = readEmbeddedPicture(file);
  check(!picture || looksLikePicture(*picture), "a picture starts like one");
  check(!picture || picture->size() <= file.identity().size, "a picture is a part of the file");
}

}  // namespace
}  // namespace Corvella

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Corvella;
  const FileDescriptor memory(::memfd_create("track", MFD_CLOEXEC), "memfd_create");
  if (::write(memory.number(), data, size) != static_cast<ssize_t>(size)) return 0;
  const auto file = RegularFile::open("/proc/self/fd/" + std::to_string(memory.number()));
  check(file.has_value(), "the file can be opened");
  checkFile(*file);
  return 0;
}
