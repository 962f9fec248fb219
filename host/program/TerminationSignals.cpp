#include "host/program/TerminationSignals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <sys/eventfd.h>
#include <sys/time.h>
#include <unistd.h>

namespace Corvella {

namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

/// What the handler of a signal may use is outside of all objects.
volatile std::sig_atomic_t eventDescriptor = -1;

void setHandler(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;  // What the signal interrupts goes on.
  ::sigaction(signal, &action, nullptr);
}

void endNow(int /*signal*/) {
  ::_exit(EXIT_SUCCESS);
}

void receive(int /*signal*/) {
  const int before = errno;
  TerminationSignals::limitEnd();
  ::eventfd_write(eventDescriptor, 1);
  errno = before;
}

}  // namespace

TerminationSignals::TerminationSignals()
    : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd") {
  eventDescriptor = event_.number();
  setHandler(SIGALRM, endNow);
  for (const int signal : kSignals) setHandler(signal, receive);
}

TerminationSignals::~TerminationSignals() {
  for (const int signal : kSignals) setHandler(signal, SIG_DFL);
}

void TerminationSignals::listen() {
  notifier_ = std::make_unique<QSocketNotifier>(event_.number(), QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
    eventfd_t count = 0;
    if (::eventfd_read(event_.number(), &count) == 0) emit received();
  });
}

/// Called by the handler of a signal, too, which may use these two: they are plain system calls.
void TerminationSignals::limitEnd() {
  constexpr itimerval kEnd{.it_interval = {},
                           .it_value = {.tv_sec = 0, .tv_usec = kLongestEnd.count() * 1000}};
  itimerval running{};
  ::getitimer(ITIMER_REAL, &running);
  const bool isCounting = running.it_value.tv_sec != 0 || running.it_value.tv_usec != 0;
  if (!isCounting) ::setitimer(ITIMER_REAL, &kEnd, nullptr);
}

}  // namespace Corvella
