#pragma once

#include <memory>
#include <string>

#include "tests/support/PrivateBus.h"

namespace Corvella {

struct MessageEnd {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, MessageEnd>;

/// A second program on the bus, which sees from outside what players do. It has a connection of its
/// own and blocks; players are named in full ("org.mpris.MediaPlayer2.mpv"). One thread at a time.
class BusClient {
 public:
  /// Throws std::system_error when the bus cannot be reached.
  explicit BusClient(const std::string& address) : bus_(connectToBus(address)) {}

  /// Properties of the Player interface; empty and NaN when the read fails.
  std::string text(const std::string& player, const char* property);
  double number(const std::string& player, const char* property);
  /// Whether the metadata has such an entry.
  bool hasMetadata(const std::string& player, const std::string& key);

 private:
  BusConnection bus_;
};

}  // namespace Corvella
