#pragma once

#include <algorithm>
#include <condition_variable>
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
    changed_.wait(lock, [this] { return open_; });
    return runner_.initWithSource(std::move(source));
  }

  void close() { setOpen(false); }
  void open() { setOpen(true); }

  /// All scripts that have come, oldest first.
  std::vector<std::string> scripts() {
    const std::lock_guard lock(mutex_);
    return scripts_;
  }

  /// How many scripts have come that end like that.
  std::ptrdiff_t count(const std::string& ending) {
    const std::lock_guard lock(mutex_);
    return std::count_if(scripts_.begin(), scripts_.end(),
                         [&](const std::string& script) { return script.ends_with(ending); });
  }

 private:
  void setOpen(bool open) {
    const std::lock_guard lock(mutex_);
    open_ = open;
    changed_.notify_all();
  }

  ScriptRunner& runner_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = true;
  std::vector<std::string> scripts_;
};

}  // namespace Corvella
