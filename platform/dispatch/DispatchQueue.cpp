#include "platform/dispatch/DispatchQueue.h"

#include <cassert>
#include <utility>

void DispatchQueue::assertCurrent() const {
  assert(isCurrent());
}

void dispatch_async(DispatchQueue& queue, std::function<void()> block) {
  queue.enqueue(std::move(block));
}
