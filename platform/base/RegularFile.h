#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// Tells one state of a file from any other: which file, and when it last changed. Times are
/// nanoseconds of the system clock.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modified = 0;  ///< When the content was written; programs may set it as they like.
  std::int64_t changed = 0;   ///< When content or properties were touched; set by the system alone.

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// A regular file open for reading: never a directory, a pipe or a device. Used by one thread at a
/// time.
class RegularFile {
 public:
  /// Opens without waiting for anybody; absent when there is no such regular file or it may not be
  /// read.
  static std::optional<RegularFile> open(const std::filesystem::path& path);

  /// The file as it was when it was opened.
  const FileIdentity& identity() const { return identity_; }

  /// Whether the file is still as it was when it was opened.
  bool unchanged() const;

  /// All bytes of the file as it was when it was opened; absent when they are more than `limit`,
  /// the file changes meanwhile or it cannot be read.
  std::optional<std::vector<std::byte>> readAll(std::size_t limit) const;

  /// Stays owned by this object.
  int descriptor() const { return file_.number(); }

 private:
  RegularFile(FileDescriptor file, const FileIdentity& identity)
      : file_(std::move(file)), identity_(identity) {}

  FileDescriptor file_;
  FileIdentity identity_;
};

}  // namespace Corvella
