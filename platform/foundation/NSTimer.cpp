#include "platform/foundation/NSTimer.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace {

Clock::TimePoint::duration usable(std::chrono::duration<double> interval) {
  using Seconds = std::chrono::duration<double>;
  constexpr Seconds shortest = std::chrono::microseconds{100};
  // Keeps every due time within the clock's range.
  constexpr Seconds longest = std::chrono::years{100};
  if (!(interval >= shortest)) interval = shortest;
  return std::chrono::round<Clock::TimePoint::duration>(std::min(interval, longest));
}

}  // namespace

std::shared_ptr<NSTimer> NSTimer::scheduledTimerWithTimeInterval(
    RunLoop& runLoop, std::chrono::duration<double> interval, TargetAction targetAction,
    bool repeats) {
  assert(targetAction);
  auto timer =
      std::make_shared<NSTimer>(Key(), runLoop, interval, std::move(targetAction), repeats);
  runLoop.addTimer(timer, runLoop.now() + timer->interval_);
  return timer;
}

NSTimer::NSTimer(Key, RunLoop& runLoop, std::chrono::duration<double> interval,
                 TargetAction targetAction, bool repeats)
    : runLoop_(runLoop),
      interval_(usable(interval)),
      repeats_(repeats),
      targetAction_(std::move(targetAction)) {}

void NSTimer::invalidate() {
  if (!valid_) return;
  // Released at the very end, as the target may hold the last reference to this timer. Within a
  // tick there is nothing to release here: `fire` has the action.
  const auto released = std::exchange(targetAction_, nullptr);
  valid_ = false;
  runLoop_.removeTimer(*this);
}

void NSTimer::fire(Clock::TimePoint due) {
  auto action = std::exchange(targetAction_, nullptr);
  action(*this);
  if (!valid_) return;
  if (repeats_) {
    targetAction_ = std::move(action);
    scheduleAfter(due);
  } else {
    invalidate();
  }
}

/// The next due time in the same phase that still lies ahead.
void NSTimer::scheduleAfter(Clock::TimePoint due) {
  const auto passed = (runLoop_.now() - due) / interval_;
  runLoop_.addTimer(shared_from_this(), due + (passed + 1) * interval_);
}
