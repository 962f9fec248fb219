#pragma once

#include <atomic>
#include <chrono>

#include "platform/dispatch/Clock.h"

namespace Corvella {

/// A clock that stands still until a test advances it. Any thread.
class ManualClock final : public Clock {
 public:
  TimePoint now() const override { return TimePoint(TimePoint::duration(ticks_.load())); }

  /// `duration` is not negative.
  void advance(TimePoint::duration duration) { ticks_ += duration.count(); }

 private:
  // Ahead of every machine's clock: a loop that sleeps until a time of this one sleeps until
  // somebody wakes it.
  std::atomic<TimePoint::rep> ticks_ =
      TimePoint::duration(std::chrono::seconds{1'000'000'007}).count();
};

}  // namespace Corvella
