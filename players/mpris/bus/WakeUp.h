#pragma once

#include <sys/eventfd.h>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// Wakes a thread out of poll(), which waits for `descriptor()` to become readable. Any thread.
class WakeUp {
 public:
  int descriptor() const { return event_.number(); }
  void signal() const { eventfd_write(descriptor(), 1); }
  void clear() const {
    eventfd_t count = 0;
    eventfd_read(descriptor(), &count);
  }

 private:
  FileDescriptor event_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd"};
};

}  // namespace Corvella
