#include "platform/base/RegularFile.h"

#include <cerrno>
#include <span>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Corvella {

namespace {

std::int64_t nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

FileIdentity identityOf(const struct stat& status) {
  return {.device = status.st_dev,
          .inode = status.st_ino,
          .size = static_cast<std::uint64_t>(status.st_size),
          .modified = nanoseconds(status.st_mtim),
          .changed = nanoseconds(status.st_ctim)};
}

std::optional<FileIdentity> identityOfDescriptor(int descriptor) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return identityOf(status);
}

/// Asked before the file is opened, because opening a pipe wakes its writer and opening a device
/// may set it to work. What was opened is asked again, as the path may have changed hands.
bool namesRegularFile(const std::string& path) {
  struct stat status {};
  return path.find('\0') == std::string::npos && ::stat(path.c_str(), &status) == 0 &&
         S_ISREG(status.st_mode);
}

/// How many bytes were read into `bytes` from `offset` on: fewer than asked for only at the end of
/// the file or on an error.
std::size_t readAt(int descriptor, std::span<std::byte> bytes, std::size_t offset) {
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const auto count = ::pread(descriptor, bytes.data() + filled, bytes.size() - filled,
                               static_cast<off_t>(offset + filled));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    filled += static_cast<std::size_t>(count);
  }
  return filled;
}

}  // namespace

std::optional<RegularFile> RegularFile::open(const std::filesystem::path& path) {
  if (!namesRegularFile(path.native())) return std::nullopt;
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (descriptor < 0) return std::nullopt;
  FileDescriptor file(descriptor, path.c_str());
  const auto identity = identityOfDescriptor(descriptor);
  if (!identity) return std::nullopt;
  return RegularFile(std::move(file), *identity);
}

bool RegularFile::unchanged() const {
  return identityOfDescriptor(descriptor()) == identity_;
}

std::optional<std::vector<std::byte>> RegularFile::readAll(std::size_t limit) const {
  if (identity_.size > limit) return std::nullopt;
  std::vector<std::byte> bytes(identity_.size);
  if (readAt(descriptor(), bytes, 0) != bytes.size()) return std::nullopt;
  // Some files of the system report no size although they hold text.
  std::byte further{};
  if (readAt(descriptor(), {&further, 1}, bytes.size()) != 0) return std::nullopt;
  if (!unchanged()) return std::nullopt;
  return bytes;
}

}  // namespace Corvella
