#pragma once

#include <cassert>
#include <cstddef>
#include <deque>
#include <functional>
#include <utility>

#include "platform/dispatch/DispatchQueue.h"

namespace Corvella {

/// A queue that holds its blocks until a test runs them, in any order. One thread; current while
/// it runs a block.
class ManualQueue final : public DispatchQueue {
 public:
  void enqueue(std::function<void()> block) override { blocks_.push_back(std::move(block)); }
  bool isCurrent() const override { return running_; }

  std::size_t size() const { return blocks_.size(); }

  /// Runs the block at `index`, 0 being the oldest one, and destroys it; `meanwhile`, what another
  /// thread does in between, is called once the block has returned and still exists.
  void run(std::size_t index, const std::function<void()>& meanwhile = {}) {
    assert(index < size() && !running_);
    const auto position = blocks_.begin() + static_cast<std::ptrdiff_t>(index);
    auto block = std::move(*position);
    blocks_.erase(position);
    running_ = true;
    block();
    if (meanwhile) meanwhile();
    block = nullptr;
    running_ = false;
  }

  /// Runs all blocks, oldest first, those that come up meanwhile too.
  void runAll() {
    while (!blocks_.empty()) run(0);
  }

 private:
  std::deque<std::function<void()>> blocks_;
  bool running_ = false;
};

}  // namespace Corvella
