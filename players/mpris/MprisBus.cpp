#include "players/mpris/MprisBus.h"

#include <stdexcept>

#include <sdbus-c++/sdbus-c++.h>

#include "players/mpris/BusConnections.h"
#include "players/mpris/BusMessages.h"
#include "players/mpris/BusWatch.h"
#include "players/mpris/MprisNames.h"

namespace Corvella {

using namespace MprisNames;

MprisBus::MprisBus(MprisObserver& observer) try
    : connections_(std::make_unique<BusConnections>()),
      watch_(std::make_unique<BusWatch>(observer)) {
} catch (const sdbus::Error& error) {
  throw std::runtime_error("no session bus: " + error.getMessage());
}

MprisBus::~MprisBus() = default;

PlayerAnswer<PropertyValue> MprisBus::get(const std::string& owner, const char* property) {
  return connections_->call(
      owner, kPropertiesInterface, "Get",
      [&](sdbus::Message& message) { message << kPlayerInterface << property; },
      [](sdbus::Message& reply) { return readVariant(reply); });
}

PlayerAnswer<PropertyMap> MprisBus::getAll(const std::string& owner) {
  return connections_->call(
      owner, kPropertiesInterface, "GetAll",
      [](sdbus::Message& message) { message << kPlayerInterface; },
      [](sdbus::Message& reply) { return readProperties(reply); });
}

PlayerAnswer<Done> MprisBus::set(const std::string& owner, const char* property, double value) {
  return connections_->call(
      owner, kPropertiesInterface, "Set",
      [&](sdbus::Message& message) {
        message << kPlayerInterface << property << sdbus::Variant(value);
      },
      [](sdbus::Message& /*reply*/) { return Done(); });
}

PlayerAnswer<Done> MprisBus::call(const std::string& owner, const char* method) {
  return connections_->call(
      owner, kPlayerInterface, method, [](sdbus::Message& /*message*/) {},
      [](sdbus::Message& /*reply*/) { return Done(); });
}

void MprisBus::probe(const std::string& owner) {
  watch_->probe(owner);
}

}  // namespace Corvella
