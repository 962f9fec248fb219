#pragma once

#include <functional>

/// Takes blocks of work from any thread and runs each of them once, later.
class DispatchQueue {
 public:
  DispatchQueue() = default;
  DispatchQueue(const DispatchQueue&) = delete;
  DispatchQueue& operator=(const DispatchQueue&) = delete;
  virtual ~DispatchQueue() = default;

  /// Takes a block that is not empty; it never runs within this call. May be called on any
  /// thread. A queue that has
  /// ended does not run it, and destroys it on the calling thread.
  virtual void enqueue(std::function<void()> block) = 0;

  /// Whether the calling thread is one that runs this queue's blocks. May be called on
  /// any thread.
  virtual bool isCurrent() const = 0;

  /// Ends the program, in debug builds, when `isCurrent()` does not hold.
  void assertCurrent() const;
};

/// The platform's name for `DispatchQueue::enqueue`.
void dispatch_async(DispatchQueue& queue, std::function<void()> block);
