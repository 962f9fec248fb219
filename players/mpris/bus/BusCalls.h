#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <list>
#include <string>

#include "players/mpris/bus/PropertyValue.h"
#include "players/mpris/bus/SdBus.h"

namespace Corvella {

/// Calls whose replies come later, while the connection is processed.
///
/// Owned by `BusWatch` and used on its thread alone. Calls that have no reply yet when this object
/// ends are given up.
class BusCalls {
 public:
  using ReplyHandler = std::function<void(sd_bus_message*)>;

  /// In microseconds, as all deadlines here: the reply may take as long as it likes.
  static constexpr auto kNoDeadline = std::numeric_limits<std::uint64_t>::max();

  /// `bus` outlives this object.
  explicit BusCalls(sd_bus* bus) : bus_(bus) {}
  BusCalls(const BusCalls&) = delete;
  BusCalls& operator=(const BusCalls&) = delete;

  sd_bus* bus() const { return bus_; }

  /// Sends a call; `handler` gets the reply, or an error in its place. A reply that misses the
  /// deadline is an error, too. Throws std::system_error when the call cannot be sent.
  void send(BusMessage message, std::uint64_t deadline, ReplyHandler handler);

  /// Asks a player for all properties of one of its interfaces, likewise.
  void getAll(const std::string& owner, const char* interface, std::uint64_t deadline,
              ReplyHandler handler);

 private:
  struct Call {
    BusCalls& calls;
    ReplyHandler handler;
    BusSlot slot{};
  };

  static int replied(sd_bus_message* reply, void* call, sd_bus_error* error) noexcept;

  sd_bus* const bus_;
  std::list<Call> calls_;
};

/// Whether an error came in place of a reply.
bool isError(sd_bus_message* reply);

/// The properties that a reply to `BusCalls::getAll` lists; none where an error came.
PropertyMap listedIn(sd_bus_message* reply);

}  // namespace Corvella
