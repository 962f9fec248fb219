#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/dispatch/RunLoop.h"

/// Calls its target at a set time, once or again and again. Lives on the run loop's thread.
///
/// Its run loop keeps it, and it keeps its target, until it is invalidated, has fired for the only
/// time, or the loop ends. A target that keeps its timer must therefore invalidate it to end.
class NSTimer final : public RunLoop::Timer, public std::enable_shared_from_this<NSTimer> {
  class Key {
    friend NSTimer;
    Key() = default;
  };

 public:
  using TargetAction = std::function<void(NSTimer& timer)>;

  /// Makes a timer that calls `targetAction`, which holds the target, on the run loop: after
  /// `interval`, and if it repeats, at every whole number of intervals from now. Times that pass
  /// while the loop or the target is busy are made up for by a single call.
  ///
  /// An interval below 0.1 milliseconds (or none: NaN) counts as 0.1 milliseconds, as on the
  /// platform. The timer of a loop that has ended is invalid from the start.
  static std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(
      RunLoop& runLoop, std::chrono::duration<double> interval, TargetAction targetAction,
      bool repeats);

  /// The target is never called again and is released: at once, or right after the call in which
  /// this happens. No effect on an invalid timer.
  void invalidate() override;

  /// A timer that does not repeat is still valid within its only call.
  bool isValid() const { return valid_; }

  /// Called by `scheduledTimerWithTimeInterval`, which alone can make a `Key`.
  NSTimer(Key key, RunLoop& runLoop, std::chrono::duration<double> interval,
          TargetAction targetAction, bool repeats);

 private:
  void fire(Clock::TimePoint due) override;
  void scheduleAfter(Clock::TimePoint due);

  RunLoop& runLoop_;  // Not used once the timer is invalid, as it may be gone.
  const Clock::TimePoint::duration interval_;
  const bool repeats_;
  bool valid_ = true;
  TargetAction targetAction_;
};
