#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/dispatch/Clock.h"
#include "platform/dispatch/DispatchQueue.h"

/// A main thread's loop: runs the main queue's blocks and fires timers, one after the other, in the
/// order in which the blocks were enqueued and the timers became due.
///
/// Belongs to the thread that made it until `run()` or `runTurn()` is called on another one. It
/// ends when `run()` returns, else when it is destroyed. What it holds then is let go, on the
/// thread that ends it: blocks are destroyed, timers invalidated. It is not destroyed from within a
/// turn.
class RunLoop final : private DispatchQueue {
 public:
  /// What a loop keeps until it is due. Called on the loop's thread only.
  class Timer {
   public:
    virtual ~Timer() = default;

    /// Called once per `addTimer`, with the time given there; the loop has let go of it by then.
    virtual void fire(Clock::TimePoint due) = 0;

    /// Lets go of everything: the loop has ended.
    virtual void invalidate() = 0;
  };

  /// `clock` must outlive the loop.
  explicit RunLoop(const Clock& clock);
  ~RunLoop() override;

  /// Ends with the loop, and must not be used after its destruction.
  DispatchQueue& mainQueue() { return *this; }

  /// Makes turns on the calling thread until `stop()`, asleep whenever there is nothing to do.
  /// Needs a clock that runs by itself. Returns at once when the loop was stopped before.
  void run();

  /// From now on no block runs and no timer fires any more. May be called on any thread, also from
  /// within a turn.
  void stop();

  /// One turn, without waiting: runs the blocks that were enqueued and fires the timers that were
  /// due when it began. What comes up meanwhile is left to the next turn. Returns whether anything
  /// ran.
  bool runTurn();

  /// `observer` is called at the end of each turn in which something ran. To be set before the loop
  /// runs, on any thread.
  void setTurnObserver(std::function<void()> observer);

  /// The clock's time. May be called on any thread.
  Clock::TimePoint now() const { return clock_.now(); }

  /// Keeps a timer until it fires or is removed. A loop that has ended invalidates it instead. From
  /// within a turn `due` lies ahead. To be called on the loop's thread.
  void addTimer(std::shared_ptr<Timer> timer, Clock::TimePoint due);

  /// Lets go of a timer; no effect when the loop does not keep it. To be called on the loop's
  /// thread.
  void removeTimer(const Timer& timer);

 private:
  struct Block {
    Clock::TimePoint enqueued;
    std::function<void()> run;
  };
  using Blocks = std::deque<Block>;

  void enqueue(std::function<void()> block) override;
  bool isCurrent() const override;

  void becomeCurrent();
  bool runStep(Blocks& blocks, Clock::TimePoint turnStart);
  bool timerIsNext(const Blocks& blocks, Clock::TimePoint turnStart) const;
  void fireNextTimer();
  void waitForWork();
  void end();
  Blocks takeBlocks();

  const Clock& clock_;
  std::atomic<std::thread::id> thread_ = std::this_thread::get_id();
  std::atomic<bool> stopped_ = false;

  std::mutex mutex_;
  std::condition_variable condition_;
  Blocks blocks_;  // Guarded by the lock.
  // Written under the lock. The loop's own thread reads it without.
  bool ended_ = false;

  std::multimap<Clock::TimePoint, std::shared_ptr<Timer>> timers_;
  std::function<void()> turnObserver_;
  bool inTurn_ = false;
};
