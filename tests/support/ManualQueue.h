#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <utility>

#include "platform/dispatch/DispatchQueue.h"

namespace Corvella {

/// A queue that holds its blocks until a test runs them, in any order. One thread; never current.
class ManualQueue final : public DispatchQueue {
 public:
  void enqueue(std::function<void()> block) override { blocks_.push_back(std::move(block)); }
  bool isCurrent() const override { return false; }

  std::size_t size() const { return blocks_.size(); }

  /// Runs the block at `index`, 0 being the oldest one, and destroys it; `meanwhile`, what another
  /// thread does in between, is called once the block has returned and still exists.
  void run(
      std::size_t index, const std::function<void()>& meanwhile = [] {}) {
    const auto block = std::exchange(blocks_.at(index), nullptr);
    blocks_.erase(blocks_.begin() + static_cast<std::ptrdiff_t>(index));
    block();
    meanwhile();
  }

  /// Runs all blocks, oldest first, those that come up meanwhile too.
  void runAll() {
    while (!blocks_.empty()) run(0);
  }

 private:
  std::deque<std::function<void()>> blocks_;
};

}  // namespace Corvella
