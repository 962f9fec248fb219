#include "tests/support/BusClient.h"

#include <cstdint>

namespace Corvella {

namespace {

constexpr auto kBus = "org.freedesktop.DBus";
constexpr auto kPlayer = "org.mpris.MediaPlayer2.Player";
constexpr auto kProperties = "org.freedesktop.DBus.Properties";

template <typename Type>
Type next(sd_bus_message* message, char type) {
  Type value{};
  sd_bus_message_read_basic(message, type, &value);
  return value;
}

std::vector<std::string> nextElements(sd_bus_message* message, char type, const char* contents) {
  std::vector<std::string> elements;
  sd_bus_message_enter_container(message, type, contents);
  while (auto element = nextValueAsText(message)) elements.push_back(std::move(*element));
  sd_bus_message_exit_container(message);
  return elements;
}

std::string nextContainerAsText(sd_bus_message* message, char type, const char* contents) {
  std::string text;
  const auto elements = nextElements(message, type, contents);
  for (const auto& element : elements) {
    if (&element != &elements.front()) text += type == 'e' ? ": " : ", ";
    text += element;
  }
  return text;
}

std::map<std::string, std::string> nextDictionary(sd_bus_message* message) {
  std::map<std::string, std::string> entries;
  if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) return entries;
  while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
    const auto key = nextValueAsText(message).value_or("");
    entries[key] = nextValueAsText(message).value_or("");
    sd_bus_message_exit_container(message);
  }
  return entries;
}

template <typename Type>
constexpr auto kTypeOf = "as";
template <>
constexpr auto kTypeOf<bool> = "b";
template <>
constexpr auto kTypeOf<std::int64_t> = "x";
template <>
constexpr auto kTypeOf<double> = "d";
template <>
constexpr auto kTypeOf<std::string> = "s";

}  // namespace

std::optional<std::string> nextValueAsText(sd_bus_message* message) {
  char type = 0;
  const char* contents = nullptr;
  if (sd_bus_message_peek_type(message, &type, &contents) <= 0) return std::nullopt;
  switch (type) {
    case 'y':
      return std::to_string(next<std::uint8_t>(message, type));
    case 'n':
      return std::to_string(next<std::int16_t>(message, type));
    case 'q':
      return std::to_string(next<std::uint16_t>(message, type));
    case 'i':
      return std::to_string(next<std::int32_t>(message, type));
    case 'u':
      return std::to_string(next<std::uint32_t>(message, type));
    case 'x':
      return std::to_string(next<std::int64_t>(message, type));
    case 't':
      return std::to_string(next<std::uint64_t>(message, type));
    case 'd':
      return std::to_string(next<double>(message, type));
    case 'b':
      return next<int>(message, type) != 0 ? "true" : "false";
    case 's':
    case 'o':
    case 'g':
      return next<const char*>(message, type);
    default:
      return nextContainerAsText(message, type, contents);
  }
}

BusClient::BusClient(const std::string& address, std::chrono::milliseconds deadline)
    : bus_(connectToBus(address)) {
  const auto microseconds = std::chrono::microseconds(deadline).count();
  sd_bus_set_method_call_timeout(bus_.get(), static_cast<std::uint64_t>(microseconds));
}

std::optional<std::string> BusClient::text(const std::string& player, const std::string& name) {
  const auto reply = readProperty(player, name);
  return reply ? nextValueAsText(reply.get()) : std::nullopt;
}

template <typename Type>
std::optional<Type> BusClient::get(const std::string& player, const std::string& name) {
  const auto reply = readProperty(player, name);
  if (!reply || sd_bus_message_enter_container(reply.get(), 'v', kTypeOf<Type>) <= 0) {
    return std::nullopt;
  }
  if constexpr (std::is_same_v<Type, bool>) {
    return next<int>(reply.get(), 'b') != 0;
  } else if constexpr (std::is_arithmetic_v<Type>) {
    return next<Type>(reply.get(), *kTypeOf<Type>);
  } else if constexpr (std::is_same_v<Type, std::string>) {
    return next<const char*>(reply.get(), 's');
  } else {
    return nextElements(reply.get(), 'a', "s");
  }
}

template std::optional<bool> BusClient::get(const std::string&, const std::string&);
template std::optional<std::int64_t> BusClient::get(const std::string&, const std::string&);
template std::optional<double> BusClient::get(const std::string&, const std::string&);
template std::optional<std::string> BusClient::get(const std::string&, const std::string&);
template std::optional<std::vector<std::string>> BusClient::get(const std::string&,
                                                                const std::string&);

std::map<std::string, std::string> BusClient::all(const std::string& player,
                                                  const std::string& interface) {
  const auto reply = send(player, kProperties, "GetAll", "s", interface.c_str());
  return reply ? nextDictionary(reply.get()) : std::map<std::string, std::string>{};
}

std::map<std::string, std::string> BusClient::metadata(const std::string& player) {
  const auto reply = readProperty(player, "Metadata");
  if (!reply || sd_bus_message_enter_container(reply.get(), 'v', "a{sv}") <= 0) return {};
  return nextDictionary(reply.get());
}

bool BusClient::call(const std::string& player, const std::string& method) {
  return send(player, kPlayer, method.c_str(), "") != nullptr;
}

bool BusClient::set(const std::string& player, const std::string& name, double value) {
  return send(player, kProperties, "Set", "ssv", kPlayer, name.c_str(), "d", value) != nullptr;
}

std::vector<std::string> BusClient::names() {
  const auto reply = send(kBus, kBus, "ListNames", "");
  return reply ? nextElements(reply.get(), 'a', "s") : std::vector<std::string>{};
}

bool BusClient::ownsName(const std::string& name) {
  return ownerOf(name).has_value();
}

std::optional<pid_t> BusClient::ownerOf(const std::string& name) {
  const auto reply = send(kBus, kBus, "GetConnectionUnixProcessID", "s", name.c_str());
  if (!reply) return std::nullopt;
  return static_cast<pid_t>(next<std::uint32_t>(reply.get(), 'u'));
}

template <typename... Arguments>
BusMessage BusClient::send(const std::string& player, const char* interface, const char* member,
                           const char* types, Arguments... arguments) {
  sd_bus_error error{};
  sd_bus_message* reply = nullptr;
  sd_bus_call_method(bus_.get(), player.c_str(), "/org/mpris/MediaPlayer2", interface, member,
                     &error, &reply, types, arguments...);
  lastError_ = error.name != nullptr ? error.name : "";
  sd_bus_error_free(&error);
  return BusMessage(reply);
}

BusMessage BusClient::readProperty(const std::string& player, const std::string& name) {
  return send(player, kProperties, "Get", "ss", kPlayer, name.c_str());
}

}  // namespace Corvella
