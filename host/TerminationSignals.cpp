#include "host/TerminationSignals.h"

#include <cerrno>
#include <csignal>
#include <system_error>

#include <sys/signalfd.h>
#include <unistd.h>

namespace Corvella {

namespace {

sigset_t terminationSet() {
  sigset_t set{};
  ::sigemptyset(&set);
  for (const int each : {SIGTERM, SIGINT, SIGHUP}) ::sigaddset(&set, each);
  return set;
}

}  // namespace

TerminationSignals::TerminationSignals() {
  const auto set = terminationSet();
  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
  descriptor_ = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
}

TerminationSignals::~TerminationSignals() {
  notifier_ = nullptr;
  ::close(descriptor_);
  const auto set = terminationSet();
  ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void TerminationSignals::listen() {
  notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
    signalfd_siginfo information{};
    if (::read(descriptor_, &information, sizeof information) > 0) emit received();
  });
}

}  // namespace Corvella
