#include "players/mpris/BusMessages.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Corvella {

namespace {

template <typename Wire, typename Stored>
Stored readAs(sdbus::Message& message) {
  Wire value{};
  message >> value;
  return static_cast<Stored>(value);
}

PropertyMap readProperties(sdbus::Message& message, int depth);

PropertyValue readBasic(sdbus::Message& message, char type) {
  switch (type) {
    case 'b':
      return {readAs<bool, bool>(message)};
    case 'y':
      return {readAs<std::uint8_t, std::uint64_t>(message)};
    case 'n':
      return {readAs<std::int16_t, std::int64_t>(message)};
    case 'q':
      return {readAs<std::uint16_t, std::uint64_t>(message)};
    case 'i':
      return {readAs<std::int32_t, std::int64_t>(message)};
    case 'u':
      return {readAs<std::uint32_t, std::uint64_t>(message)};
    case 'x':
      return {readAs<std::int64_t, std::int64_t>(message)};
    case 't':
      return {readAs<std::uint64_t, std::uint64_t>(message)};
    case 'd':
      return {readAs<double, double>(message)};
    case 's':
      return {readAs<std::string, std::string>(message)};
    case 'o':
      return {readAs<sdbus::ObjectPath, std::string>(message)};
    default:
      throw std::logic_error("not a basic type");
  }
}

bool isBasic(const std::string& signature) {
  return signature.size() == 1 &&
         std::string_view("bynqiuxtdso").find(signature[0]) != std::string_view::npos;
}

/// Reads a variant; what holds a type that no player property has is stepped over.
PropertyValue readVariant(sdbus::Message& message, int depth) {
  std::string type;
  std::string contents;
  message.peekType(type, contents);
  const bool dictionary = contents == "a{sv}" && depth == 0;
  if (!isBasic(contents) && contents != "as" && !dictionary) {
    sdbus::Variant skipped;
    message >> skipped;
    return {};
  }

  PropertyValue value;
  message.enterVariant(contents);
  if (dictionary) {
    value.content = readProperties(message, depth + 1);
  } else if (contents == "as") {
    value.content = readAs<std::vector<std::string>, std::vector<std::string>>(message);
  } else {
    value = readBasic(message, contents[0]);
  }
  message.exitVariant();
  return value;
}

PropertyMap readProperties(sdbus::Message& message, int depth) {
  std::vector<Property> properties;
  message.enterContainer("{sv}");
  while (message.enterDictEntry("sv")) {
    Property property;
    message >> property.name;
    property.value = readVariant(message, depth);
    message.exitDictEntry();
    properties.push_back(std::move(property));
  }
  message.clearFlags();
  message.exitContainer();
  return PropertyMap(std::move(properties));
}

}  // namespace

PropertyValue readVariant(sdbus::Message& message) {
  return readVariant(message, 0);
}

PropertyMap readProperties(sdbus::Message& message) {
  return readProperties(message, 0);
}

}  // namespace Corvella
