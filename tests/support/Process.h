#pragma once

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/base/FileDescriptor.h"
#include "tests/support/Eventually.h"

namespace Corvella {

/// A program that runs beside the test. It is killed and reaped with this object, and by the kernel
/// when the thread that started it ends.
class Process {
 public:
  /// Runs `command`, found on the PATH, without a shell. Each `environment` entry, "NAME=value",
  /// replaces or adds to what the test has. A program that cannot be run ends with status 127 and
  /// says why in `errors()`.
  explicit Process(const std::vector<std::string>& command,
                   const std::vector<std::string>& environment = {}) {
    std::vector<std::string> texts{"env"};  // It becomes the command under the same process id.
    texts.insert(texts.end(), environment.begin(), environment.end());
    texts.insert(texts.end(), command.begin(), command.end());
    std::vector<char*> arguments;
    for (auto& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);
    const auto parent = ::getpid();
    id_ = ::fork();
    if (id_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (id_ > 0) return;

    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(127);
    ::dup2(output_.number(), STDOUT_FILENO);
    ::dup2(errors_.number(), STDERR_FILENO);
    ::execvp(arguments[0], arguments.data());
    std::perror(arguments[0]);
    ::_exit(127);
  }
  ~Process() {
    kill(SIGKILL);
    if (!status_) ::waitpid(id_, nullptr, 0);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t id() const { return id_; }
  bool running() {
    if (status_) return false;
    int status = 0;
    if (::waitpid(id_, &status, WNOHANG) != id_) return true;
    status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return false;
  }
  /// Sends a signal; nothing when the program has ended.
  void kill(int signal) {
    if (running()) ::kill(id_, signal);
  }
  /// Waits for the end: the exit status, or 128 + the signal that ended the program; absent when it
  /// never ends.
  std::optional<int> wait() {
    eventually([this] { return !running(); });
    return status_;
  }

  /// All that it has written to its standard output so far.
  std::string output() const { return contentsOf(output_); }
  /// All that it has written to its standard error so far.
  std::string errors() const { return contentsOf(errors_); }

 private:
  static std::string contentsOf(const FileDescriptor& file) {
    // Opened anew, the file is read from its start, wherever the program writes just now.
    std::ifstream stream("/proc/self/fd/" + std::to_string(file.number()));
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  // Files in memory instead of pipes: a program that nobody reads from never blocks.
  FileDescriptor output_{::memfd_create("output", MFD_CLOEXEC), "output"};
  FileDescriptor errors_{::memfd_create("errors", MFD_CLOEXEC), "errors"};
  pid_t id_ = -1;
  std::optional<int> status_;
};

}  // namespace Corvella
