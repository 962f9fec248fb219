#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "scripting/ScriptRunner.h"

namespace Corvella {

/// Lets scripts through to a runner, and holds them up while it is closed.
class ScriptGate final : public ScriptRunner {
 public:
  explicit ScriptGate(ScriptRunner& runner) : runner_(runner) {}

  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override {
    std::unique_lock lock(mutex_);
    scripts_.push_back(source);
    lock.unlock();
    ++held_;
    open_.wait(false);
    --held_;
    return runner_.initWithSource(std::move(source));
  }

  void close() { open_ = false; }
  void open() {
    open_ = true;
    open_.notify_all();
  }

  bool isHoldingScripts() const { return held_ > 0; }

  /// All scripts that have come, oldest first.
  std::vector<std::string> scripts() {
    const std::lock_guard lock(mutex_);
    return scripts_;
  }

  /// How many scripts have come that end like that.
  std::ptrdiff_t count(const std::string& ending) {
    return std::ranges::count_if(scripts(),
                                 [&](const auto& text) { return text.ends_with(ending); });
  }

 private:
  ScriptRunner& runner_;
  std::atomic<bool> open_ = true;
  std::atomic<int> held_ = 0;
  std::mutex mutex_;
  std::vector<std::string> scripts_;
};

}  // namespace Corvella
