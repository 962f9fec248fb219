#include "tests/support/Process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/Eventually.h"

namespace Corvella {

namespace {

/// A call of env(1) becomes the command under the same process id.
std::vector<std::string> commandIn(const std::vector<std::string>& environment,
                                   const std::vector<std::string>& command) {
  std::vector<std::string> whole{"env"};
  whole.insert(whole.end(), environment.begin(), environment.end());
  whole.insert(whole.end(), command.begin(), command.end());
  return whole;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (auto& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::string contentsOf(const FileDescriptor& file) {
  std::string text;
  std::array<char, 4096> block{};
  ssize_t count = 0;
  do {
    text.append(block.data(), static_cast<std::size_t>(count));
    count = ::pread(file.number(), block.data(), block.size(), static_cast<off_t>(text.size()));
  } while (count > 0);
  return text;
}

}  // namespace

Process::Process(const std::vector<std::string>& command,
                 const std::vector<std::string>& environment)
    : output_(::memfd_create("output", MFD_CLOEXEC), "output"),
      errors_(::memfd_create("errors", MFD_CLOEXEC), "errors") {
  auto texts = commandIn(environment, command);
  const auto arguments = pointersTo(texts);
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

std::optional<int> Process::wait(std::chrono::milliseconds deadline) {
  eventually([this] { return !running(); }, deadline);
  return status_;
}

std::string Process::output() const {
  return contentsOf(output_);
}

std::string Process::errors() const {
  return contentsOf(errors_);
}

}  // namespace Corvella
