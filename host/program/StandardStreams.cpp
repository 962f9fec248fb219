#include "host/program/StandardStreams.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace Corvella {

namespace {

void check(int result, const char* subject) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), subject);
}

}  // namespace

void secureStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  // The kernel gives a file that is opened the lowest free number, so this fills each gap with the
  // stream that belongs there. It is opened for the wrong direction on purpose: using it then fails
  // as it would on a closed stream, instead of losing the output without a word.
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) >= 0) continue;
    static_cast<void>(::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

CommandOutput::CommandOutput()
    : output_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0), "standard output") {
  std::fflush(stdout);
  check(::dup2(STDERR_FILENO, STDOUT_FILENO), "standard error");
}

void CommandOutput::print(std::string_view text) const {
  while (!text.empty()) {
    const auto count = ::write(output_.number(), text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw std::runtime_error("cannot write to standard output");
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace Corvella
