#pragma once

#include <chrono>

namespace Corvella {

// Whether there is a session bus, for those who are about to use it in another way than by
// `MprisBus`, which waits for one. Any thread.

/// Throws `std::runtime_error`, which says why, when no session bus takes connections. One that
/// does may still not answer. Returns at once.
void requireSessionBus();

/// Whether a session bus greets a new connection within that time; false when there is none.
bool sessionBusAnswers(std::chrono::milliseconds patience);

}  // namespace Corvella
