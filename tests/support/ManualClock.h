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
  // Not zero: machines have been up for some odd time when a program starts.
  std::atomic<TimePoint::rep> ticks_ = TimePoint::duration(std::chrono::seconds{123'457}).count();
};

}  // namespace Corvella
