#include "host/program/TerminationSignals.h"

#include <csignal>

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

/// Blocks the signals in this thread and in those that it starts. Returns the descriptor from which
/// they are read instead, or -1.
int takeSignals() {
  const auto set = terminationSet();
  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
  return ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

}  // namespace

TerminationSignals::TerminationSignals() : signals_(takeSignals(), "signalfd") {}

TerminationSignals::~TerminationSignals() {
  const auto set = terminationSet();
  ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void TerminationSignals::listen() {
  notifier_ = std::make_unique<QSocketNotifier>(signals_.number(), QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
    signalfd_siginfo information{};
    if (::read(signals_.number(), &information, sizeof information) > 0) emit received();
  });
}

}  // namespace Corvella
