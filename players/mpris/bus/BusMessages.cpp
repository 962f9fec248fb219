#include "players/mpris/bus/BusMessages.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Corvella {

namespace {

/// The longest text that an entry of that name may bring, in bytes.
std::size_t longestText(std::string_view name) {
  if (name == "mpris:artUrl") return std::size_t{48} << 20U;  // The picture itself, in a data URL.
  if (name == "xesam:asText") return std::size_t{1} << 20U;   // Lyrics.
  if (name == "xesam:url") return std::size_t{16} << 10U;     // A path with all bytes encoded.
  return std::size_t{4} << 10U;
}

/// The text without what goes beyond the limit, and without half a character at its end.
std::string limited(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return std::string(text);
  const auto continues = [](char byte) { return (byte & 0xC0) == 0x80; };
  while (limit > 0 && continues(text[limit])) --limit;
  return std::string(text.substr(0, limit));
}

template <typename Wire>
Wire readAs(sd_bus_message* message, char type) {
  Wire value{};
  checkBus(sd_bus_message_read_basic(message, type, &value), "a value");
  return value;
}

std::vector<std::string> limitedTexts(sd_bus_message* message, std::size_t limit) {
  std::vector<std::string> texts;
  readTexts(message, [&](const char* text) {
    if (limit == 0) return;
    texts.push_back(limited(text, limit));
    // Each text counts as one byte more, so that a list of empty texts has an end, too.
    limit -= std::min(limit, texts.back().size() + 1);
  });
  return texts;
}

PropertyMap readProperties(sd_bus_message* message, bool nested);

/// The contents of a variant of that type; nothing when no player property has such a type. A map
/// inside of metadata is skipped, because maps could be nested in each other to any depth.
PropertyValue readContents(sd_bus_message* message, const std::string& type, std::size_t limit,
                           bool nested) {
  if (type == "b") return {readAs<int>(message, 'b') != 0};
  if (type == "y") return {std::uint64_t{readAs<std::uint8_t>(message, 'y')}};
  if (type == "n") return {std::int64_t{readAs<std::int16_t>(message, 'n')}};
  if (type == "q") return {std::uint64_t{readAs<std::uint16_t>(message, 'q')}};
  if (type == "i") return {std::int64_t{readAs<std::int32_t>(message, 'i')}};
  if (type == "u") return {std::uint64_t{readAs<std::uint32_t>(message, 'u')}};
  if (type == "x") return {readAs<std::int64_t>(message, 'x')};
  if (type == "t") return {readAs<std::uint64_t>(message, 't')};
  if (type == "d") return {readAs<double>(message, 'd')};
  if (type == "s" || type == "o") return {limited(readAs<const char*>(message, type[0]), limit)};
  if (type == "as") return {limitedTexts(message, limit)};
  if (type == "a{sv}" && !nested) return {readProperties(message, true)};
  checkBus(sd_bus_message_skip(message, type.c_str()), "a value");
  return {};
}

PropertyValue readVariant(sd_bus_message* message, std::size_t limit, bool nested) {
  const char* type = nullptr;
  checkBus(sd_bus_message_peek_type(message, nullptr, &type), "a variant");
  if (type == nullptr) checkBus(-ENXIO, "a variant");
  checkBus(sd_bus_message_enter_container(message, 'v', type), "a variant");
  auto value = readContents(message, type, limit, nested);
  checkBus(sd_bus_message_exit_container(message), "a variant");
  return value;
}

PropertyMap readProperties(sd_bus_message* message, bool nested) {
  std::vector<Property> properties;
  checkBus(sd_bus_message_enter_container(message, 'a', "{sv}"), "properties");
  while (checkBus(sd_bus_message_enter_container(message, 'e', "sv"), "a property") > 0) {
    const std::string_view name = readAs<const char*>(message, 's');
    const auto limit = longestText(name);
    properties.push_back({limited(name, longestText("")), readVariant(message, limit, nested)});
    checkBus(sd_bus_message_exit_container(message), "a property");
  }
  checkBus(sd_bus_message_exit_container(message), "properties");
  return PropertyMap(std::move(properties));
}

}  // namespace

PropertyValue readVariant(sd_bus_message* message) {
  return readVariant(message, longestText(""), false);
}

PropertyMap readProperties(sd_bus_message* message) {
  return readProperties(message, false);
}

}  // namespace Corvella
