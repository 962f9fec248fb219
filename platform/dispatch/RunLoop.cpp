#include "platform/dispatch/RunLoop.h"

#include <algorithm>
#include <cassert>
#include <utility>

RunLoop::RunLoop(const Clock& clock) : clock_(clock) {}

RunLoop::~RunLoop() {
  assert(!inTurn_);
  end();
}

void RunLoop::run() {
  while (!stopped_) {
    if (!runTurn()) waitForWork();
  }
  end();
}

void RunLoop::stop() {
  // Notifies under the lock: the loop may be gone as soon as its thread sees the change.
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  condition_.notify_one();
}

bool RunLoop::runTurn() {
  assert(!inTurn_);
  becomeCurrent();
  inTurn_ = true;
  bool ran = false;
  {
    Blocks blocks = takeBlocks();
    const auto turnStart = now();
    while (!stopped_ && runStep(blocks, turnStart)) ran = true;
  }
  if (ran && turnObserver_) turnObserver_();
  inTurn_ = false;
  return ran;
}

void RunLoop::setTurnObserver(std::function<void()> observer) {
  turnObserver_ = std::move(observer);
}

void RunLoop::addTimer(std::shared_ptr<Timer> timer, Clock::TimePoint due) {
  assertCurrent();
  if (ended_) {
    timer->invalidate();
  } else {
    timers_.emplace(due, std::move(timer));
  }
}

void RunLoop::removeTimer(const Timer& timer) {
  assertCurrent();
  const auto found = std::find_if(timers_.begin(), timers_.end(),
                                  [&](const auto& entry) { return entry.second.get() == &timer; });
  // The timer is taken out before it is destroyed, as what ends with it may use the loop.
  if (found != timers_.end()) timers_.extract(found);
}

void RunLoop::enqueue(std::function<void()> block) {
  assert(block);
  // A refused block is destroyed after the lock is gone: what ends with it may enqueue again.
  const std::lock_guard lock(mutex_);
  if (ended_) return;
  blocks_.push_back({now(), std::move(block)});
  condition_.notify_one();
}

bool RunLoop::isCurrent() const {
  return thread_ == std::this_thread::get_id();
}

void RunLoop::becomeCurrent() {
  thread_ = std::this_thread::get_id();
}

bool RunLoop::runStep(Blocks& blocks, Clock::TimePoint turnStart) {
  if (timerIsNext(blocks, turnStart)) {
    fireNextTimer();
    return true;
  }
  if (blocks.empty()) return false;
  blocks.front().run();
  blocks.pop_front();
  return true;
}

/// A block goes before a timer that became due at the very moment at which it was enqueued.
bool RunLoop::timerIsNext(const Blocks& blocks, Clock::TimePoint turnStart) const {
  if (timers_.empty()) return false;
  const auto due = timers_.begin()->first;
  return blocks.empty() ? due <= turnStart : due < blocks.front().enqueued;
}

void RunLoop::fireNextTimer() {
  const auto entry = timers_.extract(timers_.begin());
  entry.mapped()->fire(entry.key());
}

void RunLoop::waitForWork() {
  std::unique_lock lock(mutex_);
  const auto hasWork = [this] { return stopped_ || !blocks_.empty(); };
  if (timers_.empty()) {
    condition_.wait(lock, hasWork);
  } else {
    condition_.wait_until(lock, timers_.begin()->first, hasWork);
  }
}

void RunLoop::end() {
  becomeCurrent();
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  takeBlocks().clear();
  while (!timers_.empty()) timers_.extract(timers_.begin()).mapped()->invalidate();
  turnObserver_ = nullptr;
}

RunLoop::Blocks RunLoop::takeBlocks() {
  const std::lock_guard lock(mutex_);
  return std::exchange(blocks_, {});
}
