#pragma once

#include <cerrno>
#include <system_error>

#include <sys/eventfd.h>
#include <unistd.h>

namespace Corvella {

/// Wakes a thread out of poll(), which waits for `descriptor()` to become readable. Any thread.
class WakeUp {
 public:
  WakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  ~WakeUp() { close(descriptor_); }
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;

  int descriptor() const { return descriptor_; }
  void signal() const { eventfd_write(descriptor_, 1); }
  void clear() const {
    eventfd_t count = 0;
    eventfd_read(descriptor_, &count);
  }

 private:
  int descriptor_;
};

}  // namespace Corvella
