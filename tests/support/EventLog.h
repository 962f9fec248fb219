#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Corvella {

/// What happened, in order.
class EventLog {
 public:
  void add(std::string event) { events_.push_back(std::move(event)); }

  /// All events since the last call.
  std::vector<std::string> take() { return std::exchange(events_, {}); }

 private:
  std::vector<std::string> events_;
};

}  // namespace Corvella
