#pragma once

#include <string>

#include "platform/posix/FileDescriptor.h"

namespace Corvella {

/// A file that one program at a time has for itself. The kernel gives it up with the program,
/// however that ends; the file stays.
class FileLock {
 public:
  /// Makes the file if there is none. Throws `std::system_error` when it cannot be opened.
  explicit FileLock(const std::string& path);

  /// Waits for nothing; false when another has it. Throws `std::system_error` where files cannot be
  /// locked.
  bool tryLock() const;

 private:
  FileDescriptor file_;
};

}  // namespace Corvella
