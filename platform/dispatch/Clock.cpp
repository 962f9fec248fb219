#include "platform/dispatch/Clock.h"

Clock::TimePoint SteadyClock::now() const {
  return std::chrono::steady_clock::now();
}
