#pragma once

#include <set>
#include <string>

#include "fire/Dice.h"
#include "players/mpris/bus/SdBus.h"

namespace Corvella {

/// A program on the bus that is no player and sends messages to connections that did not ask for
/// any. Used by one thread.
class Strangers {
 public:
  /// Throws std::system_error when there is no bus.
  explicit Strangers(const std::string& address);

  /// Sends something to all connections of the bus but the `spared`, which have unique names.
  /// Returns what, in a few words. Throws std::system_error when the bus has gone.
  std::string bother(Dice& dice, const std::set<std::string>& spared);

  /// Reads and drops what came in return.
  void turn();

 private:
  BusConnection bus_;
};

}  // namespace Corvella
