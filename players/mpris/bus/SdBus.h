#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>
#include <system_error>

#include <systemd/sd-bus.h>

namespace Corvella {

// Owners of sd-bus's objects. A connection, its messages and its slots count their owners together
// and without locks, so that only one thread may hold any of them at a time.

struct BusRelease {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};

using BusConnection = std::unique_ptr<sd_bus, BusRelease>;
using BusMessage = std::unique_ptr<sd_bus_message, BusRelease>;
using BusSlot = std::unique_ptr<sd_bus_slot, BusRelease>;

/// Returns the result of a function of sd-bus; throws std::system_error, which names `what`, when
/// it is a failure.
inline int checkBus(int result, const char* what) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), what);
  return result;
}

/// A time span as sd-bus takes it.
inline std::uint64_t microseconds(std::chrono::nanoseconds time) {
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(time).count());
}

/// A call of a method, with arguments of the types that sd_bus_message_append() takes. Throws
/// std::system_error.
template <typename... Arguments>
BusMessage methodCall(sd_bus* bus, const char* destination, const char* path, const char* interface,
                      const char* method, const char* types = "", Arguments... arguments) {
  sd_bus_message* message = nullptr;
  checkBus(sd_bus_message_new_method_call(bus, &message, destination, path, interface, method),
           method);
  BusMessage call(message);
  checkBus(sd_bus_message_append(message, types, arguments...), method);
  return call;
}

/// Runs a handler that sd-bus, which is C code, calls: no exception may leave it. A message that
/// cannot be read is ignored.
template <typename Action>
void guarded(Action action) noexcept {
  try {
    action();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
  }
}

/// Begins to connect to the session bus, and waits for nothing: the connection is ready once the
/// bus has greeted. Throws std::system_error when no bus takes connections.
BusConnection openSessionBus();

/// Connects to the session bus, which may take as long as `deadline`. Throws std::system_error.
BusConnection connectToSessionBus(std::chrono::milliseconds deadline);

}  // namespace Corvella
