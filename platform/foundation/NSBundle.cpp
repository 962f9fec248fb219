#include "platform/foundation/NSBundle.h"

#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// A file open for reading, closed at the end.
class OpenFile {
 public:
  // Not blocking, so that a pipe in the place of a resource holds nobody up.
  explicit OpenFile(const std::filesystem::path& path)
      : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
  ~OpenFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  /// Absent for what is no regular file.
  std::optional<std::size_t> size() const {
    struct stat status {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode)) return std::nullopt;
    return static_cast<std::size_t>(status.st_size);
  }

  bool fill(std::vector<std::byte>& bytes) const {
    std::size_t filled = 0;
    while (filled < bytes.size()) {
      const auto count = read(descriptor_, bytes.data() + filled, bytes.size() - filled);
      if (count <= 0) return false;
      filled += static_cast<std::size_t>(count);
    }
    return true;
  }

 private:
  int descriptor_;
};

}  // namespace

NSBundle::NSBundle(std::filesystem::path resourceFolder) : folder_(std::move(resourceFolder)) {}

std::filesystem::path NSBundle::pathForResource(std::string_view name) const {
  return folder_ / name;
}

std::optional<std::vector<std::byte>> NSBundle::dataForResource(std::string_view name) const {
  const OpenFile file(pathForResource(name));
  const auto size = file.size();
  if (!size) return std::nullopt;
  std::vector<std::byte> bytes(*size);
  if (!file.fill(bytes)) return std::nullopt;
  return bytes;
}
