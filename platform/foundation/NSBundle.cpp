#include "platform/foundation/NSBundle.h"

#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/FileDescriptor.h"

namespace {

/// Absent for what is no regular file.
std::optional<std::size_t> sizeOf(int file) {
  struct stat status {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return static_cast<std::size_t>(status.st_size);
}

bool fill(std::vector<std::byte>& bytes, int file) {
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const auto count = read(file, bytes.data() + filled, bytes.size() - filled);
    if (count <= 0) return false;
    filled += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

NSBundle::NSBundle(std::filesystem::path resourceFolder) : folder_(std::move(resourceFolder)) {}

std::filesystem::path NSBundle::pathForResource(std::string_view name) const {
  return folder_ / name;
}

std::optional<std::vector<std::byte>> NSBundle::dataForResource(std::string_view name) const {
  // Not blocking, so that a pipe in the place of a resource holds nobody up.
  const auto path = pathForResource(name);
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return std::nullopt;
  const Corvella::FileDescriptor file(descriptor, path.c_str());
  const auto size = sizeOf(descriptor);
  if (!size) return std::nullopt;
  std::vector<std::byte> bytes(*size);
  if (!fill(bytes, descriptor)) return std::nullopt;
  return bytes;
}
