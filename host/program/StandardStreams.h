#pragma once

#include <string_view>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// Makes the process's standard streams safe to use, whatever it was started with: a stream that is
/// closed stays unusable, instead of becoming the next file that the program opens, and writing to
/// a pipe that nobody reads fails instead of ending the program. To be called before anything else.
void secureStandardStreams();

/// Standard output, kept for what a command prints: whatever else the process writes there from now
/// on, such as the diagnostics of failed scripts, goes to standard error. One to a process; used by
/// one thread.
class CommandOutput {
 public:
  /// Throws `std::system_error` when the kernel refuses.
  CommandOutput();

  /// Writes all of the text at once. Throws `std::runtime_error` when it cannot be written.
  void print(std::string_view text) const;

  /// Stays owned by this object.
  int descriptor() const { return output_.number(); }

 private:
  FileDescriptor output_;
};

}  // namespace Corvella
