#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/support/PrivateBus.h"

namespace Corvella {

struct MessageEnd {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, MessageEnd>;

/// Reads the next value of a message, of any type, as text: booleans as "true" and "false", the
/// elements of containers joined by ", ", dictionary entries as "key: value", variants as what they
/// hold. Absent at the end of the message or container.
std::optional<std::string> nextValueAsText(sd_bus_message* message);

/// A second program on the bus, which sees from outside what players do. It has a connection of its
/// own and blocks; players are named in full ("org.mpris.MediaPlayer2.mpv"). One thread at a time.
class BusClient {
 public:
  /// Each call fails after `deadline`. Throws std::system_error when the bus cannot be reached.
  explicit BusClient(const std::string& address,
                     std::chrono::milliseconds deadline = std::chrono::seconds{10});

  /// A property of the Player interface, as text whatever its type; absent when the read fails.
  std::optional<std::string> text(const std::string& player, const std::string& name);
  /// A property of the Player interface: bool, std::int64_t, double, std::string or
  /// std::vector<std::string>; absent when the read fails or the type is another one.
  template <typename Type>
  std::optional<Type> get(const std::string& player, const std::string& name);
  /// All properties of an interface, as texts; empty when the read fails.
  std::map<std::string, std::string> all(
      const std::string& player, const std::string& interface = "org.mpris.MediaPlayer2.Player");
  /// The entries of the metadata, as texts; empty when the read fails.
  std::map<std::string, std::string> metadata(const std::string& player);

  /// Calls a method of the Player interface that takes nothing; whether it was answered.
  bool call(const std::string& player, const std::string& method);
  /// Writes a property of the Player interface as a double; whether the player said that it did.
  bool set(const std::string& player, const std::string& name, double value);

  std::vector<std::string> names();
  bool ownsName(const std::string& name);
  /// The process that owns a name.
  std::optional<pid_t> ownerOf(const std::string& name);

  /// The D-Bus name of the error that the last call ended with; empty when it succeeded.
  const std::string& lastError() const { return lastError_; }

 private:
  template <typename... Arguments>
  BusMessage send(const std::string& player, const char* interface, const char* member,
                  const char* types, Arguments... arguments);
  BusMessage readProperty(const std::string& player, const std::string& name);

  BusConnection bus_;
  std::string lastError_;
};

}  // namespace Corvella
