#include "players/mpris/bus/SdBus.h"

#include <cerrno>

namespace Corvella {

BusConnection openSessionBus() {
  sd_bus* bus = nullptr;
  checkBus(sd_bus_open_user(&bus), "sd_bus_open_user");
  return BusConnection(bus);
}

BusConnection connectToSessionBus(std::chrono::milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  auto connection = openSessionBus();
  auto* const bus = connection.get();
  // The first call would wait for the bus's greeting without any limit.
  while (checkBus(sd_bus_is_ready(bus), "sd_bus_is_ready") == 0) {
    if (checkBus(sd_bus_process(bus, nullptr), "sd_bus_process") > 0) continue;
    const auto left = end - std::chrono::steady_clock::now();
    if (left.count() <= 0) checkBus(-ETIMEDOUT, "the greeting of the bus");
    checkBus(sd_bus_wait(bus, microseconds(left)), "sd_bus_wait");
  }
  return connection;
}

}  // namespace Corvella
