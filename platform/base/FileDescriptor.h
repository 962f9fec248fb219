#pragma once

#include <cerrno>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace Corvella {

/// Owns a file descriptor and closes it when it is destroyed.
class FileDescriptor {
 public:
  /// Takes what a call of the kernel has given. Throws `std::system_error`, which names `subject`,
  /// when that call has failed.
  FileDescriptor(int number, const char* subject) : number_(number) {
    if (number < 0) throw std::system_error(errno, std::generic_category(), subject);
  }
  ~FileDescriptor() {
    if (number_ >= 0) ::close(number_);
  }
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }

  int number() const { return number_; }

 private:
  int number_;
};

}  // namespace Corvella
