#include "tests/support/BusClient.h"

#include <cstdlib>
#include <limits>

namespace Corvella {

namespace {

constexpr auto kObject = "/org/mpris/MediaPlayer2";
constexpr auto kPlayer = "org.mpris.MediaPlayer2.Player";

}  // namespace

std::string BusClient::text(const std::string& player, const char* property) {
  char* value = nullptr;
  sd_bus_get_property_string(bus_.get(), player.c_str(), kObject, kPlayer, property, nullptr,
                             &value);
  const std::unique_ptr<char, decltype(&::free)> owned(value, &::free);
  return value != nullptr ? value : "";
}

double BusClient::number(const std::string& player, const char* property) {
  double value = std::numeric_limits<double>::quiet_NaN();
  sd_bus_get_property_trivial(bus_.get(), player.c_str(), kObject, kPlayer, property, nullptr, 'd',
                              &value);
  return value;
}

bool BusClient::hasMetadata(const std::string& player, const std::string& key) {
  sd_bus_message* reply = nullptr;
  sd_bus_get_property(bus_.get(), player.c_str(), kObject, kPlayer, "Metadata", nullptr, &reply,
                      "a{sv}");
  const BusMessage owned(reply);
  if (reply == nullptr || sd_bus_message_enter_container(reply, 'a', "{sv}") < 0) return false;
  const char* name = "";
  while (name != key && sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
    checkBus(sd_bus_message_read(reply, "s", &name), "a key");
    checkBus(sd_bus_message_skip(reply, "v"), "a value");
    checkBus(sd_bus_message_exit_container(reply), "an entry");
  }
  return name == key;
}

}  // namespace Corvella
