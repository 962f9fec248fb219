#include "tests/support/Process.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <system_error>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/Eventually.h"

namespace Corvella {

Process::Process(const std::vector<std::string>& command,
                 const std::vector<std::string>& environment)
    : output_(::memfd_create("output", MFD_CLOEXEC), "output"),
      errors_(::memfd_create("errors", MFD_CLOEXEC), "errors") {
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

Process::~Process() {
  kill(SIGKILL);
  if (!status_) ::waitpid(id_, nullptr, 0);
}

bool Process::running() {
  if (status_) return false;
  int status = 0;
  if (::waitpid(id_, &status, WNOHANG) != id_) return true;
  status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  return false;
}

void Process::kill(int signal) {
  if (running()) ::kill(id_, signal);
}

std::optional<int> Process::wait() {
  eventually([this] { return !running(); });
  return status_;
}

std::string Process::contentsOf(const FileDescriptor& file) {
  // Opened anew, the file is read from its start, wherever the program writes just now.
  std::ifstream stream("/proc/self/fd/" + std::to_string(file.number()));
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace Corvella
