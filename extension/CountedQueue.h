#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "platform/dispatch/DispatchQueue.h"

namespace Corvella {

/// Counts the blocks that wait or run on the widget's queues. When the count is zero the widget has
/// settled: nothing will change its display but a timer, the user or the host. Any thread.
class BlockCount {
 public:
  /// `lastEnded` is called on whichever thread ends the last block.
  explicit BlockCount(std::function<void()> lastEnded) : lastEnded_(std::move(lastEnded)) {}
  BlockCount(const BlockCount&) = delete;
  BlockCount& operator=(const BlockCount&) = delete;

  bool isZero() const { return blocks_ == 0; }

  /// Counts one block for as long as the token exists.
  std::shared_ptr<void> count() {
    ++blocks_;
    return {nullptr, [this](void*) {
              if (--blocks_ == 0) lastEnded_();
            }};
  }

 private:
  std::atomic<int> blocks_ = 0;
  const std::function<void()> lastEnded_;
};

/// Hands its blocks on to another queue, and counts each until it has run or been refused. A block
/// that enqueues another one before it ends never lets the count fall to zero in between.
class CountedQueue final : public DispatchQueue {
 public:
  /// Both outlive this queue.
  CountedQueue(DispatchQueue& queue, BlockCount& count) : queue_(queue), count_(count) {}

  void enqueue(std::function<void()> block) override {
    // What the block holds is released while it still counts, because a destructor may enqueue
    // blocks, too.
    dispatch_async(queue_, [counted = count_.count(), block = std::move(block)]() mutable {
      block();
      block = nullptr;
    });
  }
  bool isCurrent() const override { return queue_.isCurrent(); }

 private:
  DispatchQueue& queue_;
  BlockCount& count_;
};

}  // namespace Corvella
