#pragma once

#include <chrono>
#include <thread>

namespace Corvella {

/// Waits until `condition()` holds, and tells whether it did before the deadline. The one place
/// where tests wait for another process; the default suits a slow machine under sanitizers.
template <typename Condition>
bool eventually(Condition condition,
                std::chrono::milliseconds deadline = std::chrono::seconds{10}) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds{5});
  }
  return true;
}

}  // namespace Corvella
