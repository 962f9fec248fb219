#include "platform/dispatch/GlobalQueue.h"

#include <algorithm>
#include <cassert>
#include <utility>

GlobalQueue::GlobalQueue(unsigned threads) : threadLimit_(std::max(4U, threads)) {}

GlobalQueue::~GlobalQueue() {
  assert(!isCurrent());
  std::deque<std::function<void()>> waiting;
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    waiting.swap(blocks_);
    condition_.notify_all();
  }
  waiting.clear();
  // From here on no thread is added: the queue refuses blocks.
  for (auto& thread : threads_) thread.join();
}

void GlobalQueue::enqueue(std::function<void()> block) {
  assert(block);
  // A refused block is destroyed after the lock is gone: what ends with it may enqueue again.
  const std::lock_guard lock(mutex_);
  if (ended_) return;
  blocks_.push_back(std::move(block));
  if (blocks_.size() > idleThreads_ && threads_.size() < threadLimit_) {
    startThread();
  } else {
    condition_.notify_one();
  }
}

bool GlobalQueue::isCurrent() const {
  const std::lock_guard lock(mutex_);
  return threadIds_.contains(std::this_thread::get_id());
}

void GlobalQueue::startThread() {
  threads_.emplace_back([this] { work(); });
  threadIds_.insert(threads_.back().get_id());
}

void GlobalQueue::work() {
  std::unique_lock lock(mutex_);
  while (true) {
    ++idleThreads_;
    condition_.wait(lock, [this] { return ended_ || !blocks_.empty(); });
    --idleThreads_;
    if (ended_) return;
    auto block = std::move(blocks_.front());
    blocks_.pop_front();
    lock.unlock();
    block();
    block = nullptr;
    lock.lock();
  }
}
