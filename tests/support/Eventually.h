#pragma once

#include <chrono>
#include <thread>

namespace Corvella {

/// After so long a test gives up. Nothing that works takes this long, however busy the machine is:
/// the limit is there to end a test that hangs.
constexpr std::chrono::seconds longestWait{60};

/// Waits until `condition()` holds; false when it never does. The one place where tests wait for
/// another process.
bool eventually(auto condition) {
  const auto end = std::chrono::steady_clock::now() + longestWait;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds{5});
  }
  return true;
}

}  // namespace Corvella
