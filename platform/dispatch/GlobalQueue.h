#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"

/// The global concurrent queue: starts its blocks in order, and runs several at the same time.
///
/// A thread is started when a block finds none idle, and sleeps while there is nothing to do.
class GlobalQueue final : public DispatchQueue {
 public:
  /// Runs at most as many blocks at the same time as `threads`, but never fewer than four.
  explicit GlobalQueue(unsigned threads = std::thread::hardware_concurrency());

  /// Destroys the blocks that wait and returns when those that run have ended. Not from within a
  /// block of this queue.
  ~GlobalQueue() override;

  void enqueue(std::function<void()> block) override;
  bool isCurrent() const override;

 private:
  void startThread();
  void work();

  const std::size_t threadLimit_;
  mutable std::mutex mutex_;  // Guards everything below.
  std::condition_variable condition_;
  std::deque<std::function<void()>> blocks_;
  std::vector<std::thread> threads_;
  std::set<std::thread::id> threadIds_;
  std::size_t idleThreads_ = 0;
  bool ended_ = false;
};
