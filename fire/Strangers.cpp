#include "fire/Strangers.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "players/mpris/bus/MprisNames.h"
#include "tests/support/PrivateBus.h"

namespace Corvella {

using namespace MprisNames;

namespace {

std::vector<std::string> uniqueNames(sd_bus* bus) {
  constexpr std::uint64_t kPatience = 5'000'000;
  sd_bus_message* reply = nullptr;
  const auto call = methodCall(bus, kBusName, kBusPath, kBusName, "ListNames");
  checkBus(sd_bus_call(bus, call.get(), kPatience, nullptr, &reply), "ListNames");
  const BusMessage owned(reply);
  std::vector<std::string> names;
  checkBus(sd_bus_message_enter_container(reply, 'a', "s"), "names");
  for (const char* name = nullptr; sd_bus_message_read_basic(reply, 's', &name) > 0;) {
    if (*name == ':') names.emplace_back(name);
  }
  return names;
}

BusMessage signalTo(sd_bus* bus, const std::string& to, const char* path, const char* interface,
                    const char* name) {
  sd_bus_message* signal = nullptr;
  checkBus(sd_bus_message_new_signal(bus, &signal, path, interface, name), name);
  BusMessage owned(signal);
  checkBus(sd_bus_message_set_destination(signal, to.c_str()), "a destination");
  return owned;
}

void send(sd_bus* bus, const BusMessage& message) {
  checkBus(sd_bus_send(bus, message.get(), nullptr), "a message");
}

const std::string& megabyte() {
  static const std::string text(1U << 20U, 'x');
  return text;
}

constexpr auto kOwnName = "org.corvella.Corvella";
constexpr auto kOwnPath = "/org/corvella/Corvella";

void showNonsense(sd_bus* bus, const std::string& to) {
  for (const auto& player : {std::string("\x01\n<b>"), megabyte(), std::string()}) {
    send(bus, methodCall(bus, to.c_str(), kOwnPath, kOwnName, "ShowPlayer", "s", player.c_str()));
  }
  send(bus, methodCall(bus, to.c_str(), kOwnPath, kOwnName, "ShowPlayer", "d", 0.5));
}

void callLikeAPlayer(sd_bus* bus, const std::string& to) {
  for (const auto* const method : {"Play", "Next", "Quit", "Raise"}) {
    send(bus, methodCall(bus, to.c_str(), kPlayerPath, kPlayerInterface, method));
  }
  send(bus, methodCall(bus, to.c_str(), kPlayerPath, kPropertiesInterface, "GetAll", "s", ""));
}

void forgeOwners(sd_bus* bus, const std::string& to) {
  const auto signal = signalTo(bus, to, kBusPath, kBusName, "NameOwnerChanged");
  sd_bus_message_append(signal.get(), "sss", "org.mpris.MediaPlayer2.forged", "", ":1.1");
  send(bus, signal);
}

void forgeProperties(sd_bus* bus, const std::string& to) {
  for (int i = 0; i < 200; ++i) {
    const auto signal = signalTo(bus, to, kPlayerPath, kPropertiesInterface, "PropertiesChanged");
    sd_bus_message_append(signal.get(), "sa{sv}as", kPlayerInterface, 1, "PlaybackStatus", "s",
                          "Playing", 1, "Metadata");
    send(bus, signal);
    send(bus, signalTo(bus, to, kPlayerPath, kPlayerInterface, "Seeked"));
  }
}

void sendMegabytes(sd_bus* bus, const std::string& to) {
  for (int i = 0; i < 3; ++i) {
    const auto signal = signalTo(bus, to, kPlayerPath, kPropertiesInterface, "PropertiesChanged");
    sd_bus_message_append(signal.get(), "sa{sv}as", kPlayerInterface, 1, "Metadata", "s",
                          megabyte().c_str(), 0);
    send(bus, signal);
  }
}

struct Trouble {
  const char* what;
  void (*make)(sd_bus* bus, const std::string& to);
};

constexpr std::array kTroubles{Trouble{"ask for players that are none", showNonsense},
                               Trouble{"call it like a player", callLikeAPlayer},
                               Trouble{"forge owners of names", forgeOwners},
                               Trouble{"forge properties", forgeProperties},
                               Trouble{"send megabytes", sendMegabytes}};

}  // namespace

Strangers::Strangers(const std::string& address) : bus_(connectToBus(address)) {}

std::string Strangers::bother(Dice& dice, const std::set<std::string>& spared) {
  const char* own = nullptr;
  checkBus(sd_bus_get_unique_name(bus_.get(), &own), "a name");
  const auto& trouble = dice.of(kTroubles);
  for (const auto& name : uniqueNames(bus_.get())) {
    if (name != own && !spared.contains(name)) trouble.make(bus_.get(), name);
  }
  return trouble.what;
}

void Strangers::turn() {
  constexpr int kMostMessages = 500;
  for (int i = 0; i < kMostMessages; ++i) {
    if (sd_bus_process(bus_.get(), nullptr) <= 0) return;
  }
}

}  // namespace Corvella
