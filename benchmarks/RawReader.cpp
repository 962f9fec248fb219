#include "benchmarks/RawReader.h"

#include <utility>

namespace Corvella {

namespace {

/// Reads every value of a message, whatever it is, and keeps none.
void readAll(sd_bus_message* message) {
  char type = 0;
  const char* contents = nullptr;
  while (sd_bus_message_peek_type(message, &type, &contents) > 0) {
    if (contents == nullptr) {
      union {
        std::uint64_t number;
        const char* text;
      } value{};
      checkBus(sd_bus_message_read_basic(message, type, &value), "a value");
    } else {
      checkBus(sd_bus_message_enter_container(message, type, contents), "a container");
      readAll(message);
      checkBus(sd_bus_message_exit_container(message), "a container's end");
    }
  }
}

}  // namespace

RawReader::RawReader(const std::string& address, std::string player)
    : bus_(connectToBus(address)), player_(std::move(player)) {}

void RawReader::read(const char* property) {
  sd_bus_message* reply = nullptr;
  checkBus(sd_bus_call_method(bus_.get(), player_.c_str(), "/org/mpris/MediaPlayer2",
                              "org.freedesktop.DBus.Properties", "Get", nullptr, &reply, "ss",
                              "org.mpris.MediaPlayer2.Player", property),
           property);
  const BusMessage owned(reply);
  readAll(reply);
}

void RawReader::readTick() {
  read("Position");
  read("Metadata");
  read("Volume");
}

}  // namespace Corvella
