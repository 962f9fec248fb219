// What a player says over the bus: any message is read or refused, and the track, the state and the
// figures that come of it keep their bounds. The first byte of an input says whether the message
// holds properties or one value; the rest is the body of the message, byte for byte.

#include <array>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <sys/socket.h>

#include "fuzz/Check.h"
#include "platform/base/FileDescriptor.h"
#include "platform/base/Utf8.h"
#include "players/mpris/bus/BusMessages.h"
#include "players/mpris/track/TrackMetadata.h"

namespace Corvella {
namespace {

std::string littleEndian(std::size_t number) {
  std::string bytes;
  for (unsigned shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift);
  return bytes;
}

void padTo8(std::string& bytes) {
  bytes.resize((bytes.size() + 7) / 8 * 8);
}

/// A field of a message's header: a number, and a value of the type 'o', 's' or 'g'.
void addField(std::string& fields, char number, char type, std::string_view value) {
  padTo8(fields);
  fields += {number, '\1', type, '\0'};
  // The length of a signature is one byte, that of other texts four.
  fields +=
      type == 'g' ? std::string(1, static_cast<char>(value.size())) : littleEndian(value.size());
  fields.append(value) += '\0';
}

/// A signal with that body, as it travels. D-Bus Specification, "Message Format".
std::string signalMessage(std::string_view types, std::string_view body) {
  std::string fields;
  addField(fields, 1, 'o', "/a");
  addField(fields, 2, 's', "a.b");
  addField(fields, 3, 's', "C");
  addField(fields, 8, 'g', types);
  const std::string kindAndVersion{'l', '\4', '\0', '\1'};
  auto message = kindAndVersion + littleEndian(body.size()) + littleEndian(1) +
                 littleEndian(fields.size()) + fields;
  padTo8(message);
  return message.append(body);
}

/// A connection to a peer who has let us in and sent these bytes; no bus takes part.
BusConnection connectionThatReceives(std::string_view bytes) {
  std::array<int, 2> ends{};
  checkBus(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()),
           "socketpair");
  const FileDescriptor peer(ends[0], "peer");
  const auto sent =
      "DATA\r\nOK " + std::string(32, 'a') + "\r\nAGREE_UNIX_FD\r\n" + std::string(bytes);
  ::send(peer.number(), sent.data(), sent.size(), MSG_NOSIGNAL);
  sd_bus* bus = nullptr;
  checkBus(sd_bus_new(&bus), "sd_bus_new");
  BusConnection connection(bus);
  checkBus(sd_bus_set_fd(bus, ends[1], ends[1]), "sd_bus_set_fd");
  checkBus(sd_bus_start(bus), "sd_bus_start");
  // The peer must be there until the connection has shaken hands.
  while (sd_bus_is_ready(bus) == 0 && sd_bus_process(bus, nullptr) > 0) {
  }
  return connection;
}

/// The first message of the connection; null when sd-bus refuses what was sent.
BusMessage receivedMessage(sd_bus* bus) {
  sd_bus_message* message = nullptr;
  while (sd_bus_process(bus, &message) > 0 && message == nullptr) {
  }
  return BusMessage(message);
}

void checkText(std::string_view text, std::size_t limit) {
  check(isUtf8(text), "a text is UTF-8");
  // Texts of a list are joined by commas and blanks.
  check(text.size() <= 2 * limit, "a text is cut to its limit");
}

void checkTrack(const TrackMetadata& track) {
  constexpr std::size_t kShort = std::size_t{4} << 10U;
  for (const auto* text : {&track.artist, &track.album}) checkText(*text, kShort);
  checkText(track.url, 4 * kShort);
  checkText(track.title, 4 * kShort);  // Perhaps of the address.
  checkText(track.asText, std::size_t{1} << 20U);
  check(!track.length || (track.length->count() > 0 && *track.length <= std::chrono::hours(720)),
        "a length is above zero and not absurd");
  check(!track.userRating || std::isfinite(*track.userRating), "a rating is a number");
}

/// Whatever a value is meant as, it gives something sensible or nothing.
void checkValue(const PropertyValue* value) {
  check(isUtf8(textOf(value)), "a text is UTF-8");
  const auto volume = volumeOf(value);
  check(volume >= 0 && volume <= 100, "a volume is on its scale");
  const auto position = positionOf(value);
  check(!position || position->count() >= 0, "a position is not negative");
  if (const auto number = numberOf(value)) {
    check(std::isfinite(*number), "a number is finite");
    const auto points = ratingPoints(*number);
    check(points >= 0 && points <= 100, "a rating is on its scale");
  }
  stateOf(value);
  checkTrack(readTrackMetadata(value));
}

void checkProperties(PropertyMap properties) {
  for (const auto* name : {"Metadata", "PlaybackStatus", "Position", "Rating", "Volume"}) {
    checkValue(properties.find(name));
  }
  const PropertyValue whole{std::move(properties)};
  checkValue(&whole);
}

void checkMessage(bool holdsProperties, std::string_view body) {
  const auto bus = connectionThatReceives(signalMessage(holdsProperties ? "a{sv}" : "v", body));
  const auto message = receivedMessage(bus.get());
  if (!message) return;
  try {
    if (holdsProperties) {
      checkProperties(readProperties(message.get()));
    } else {
      const auto value = readVariant(message.get());
      checkValue(&value);
    }
  } catch (const std::system_error&) {
    // The message holds something else than its types say.
  }
}

}  // namespace
}  // namespace Corvella

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string body(data + 1, data + size);
  Corvella::checkMessage(data[0] % 2 == 0, body);
  return 0;
}
