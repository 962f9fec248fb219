#pragma once

#include <string>

namespace Corvella {

/// A file that one program at a time has for itself. The kernel gives it up with the program,
/// however that ends; the file stays.
class FileLock {
 public:
  /// Makes the file if there is none. Throws `std::system_error` when it cannot be opened.
  explicit FileLock(const std::string& path);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  /// Waits for nothing; false when another has it. Throws `std::system_error` where files cannot be
  /// locked.
  bool tryLock() const;

 private:
  int descriptor_;
};

}  // namespace Corvella
