#pragma once

#include <chrono>

/// Monotonic time, handed to whoever measures it so that tests can replace it.
class Clock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  virtual ~Clock() = default;

  /// The time now, which never goes back. May be called on any thread.
  virtual TimePoint now() const = 0;
};

/// The machine's own monotonic clock.
class SteadyClock final : public Clock {
 public:
  TimePoint now() const override;
};
