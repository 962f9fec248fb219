#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// A program that runs beside the test. It is killed and reaped with this object, and by the kernel
/// when the thread that started it ends.
class Process {
 public:
  /// Runs `command`, found on the PATH, without a shell. Each `environment` entry, "NAME=value",
  /// replaces or adds to what the test has. A program that cannot be run ends with status 127 and
  /// says why in `errors()`.
  explicit Process(const std::vector<std::string>& command,
                   const std::vector<std::string>& environment = {});
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t id() const { return id_; }
  bool running();
  /// Sends a signal; nothing when the program has ended.
  void kill(int signal);
  /// Waits for the end: the exit status, or 128 + the signal that ended the program; absent when it
  /// never ends.
  std::optional<int> wait();

  /// All that it has written to its standard output so far.
  std::string output() const { return contentsOf(output_); }
  /// All that it has written to its standard error so far.
  std::string errors() const { return contentsOf(errors_); }

 private:
  static std::string contentsOf(const FileDescriptor& file);

  // Files in memory instead of pipes: a program that nobody reads from never blocks.
  FileDescriptor output_;
  FileDescriptor errors_;
  pid_t id_ = -1;
  std::optional<int> status_;
};

}  // namespace Corvella
