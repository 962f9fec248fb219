#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Corvella {

/// What happened, in order. Any thread.
class EventLog {
 public:
  void add(std::string event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }

  /// All events since the last call.
  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(events_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> events_;
};

}  // namespace Corvella
