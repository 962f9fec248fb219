#include "players/mpris/bus/MprisBus.h"

#include <string>
#include <utility>
#include <variant>

#include "players/mpris/bus/BusConnections.h"
#include "players/mpris/bus/BusMessages.h"
#include "players/mpris/bus/BusWatch.h"
#include "players/mpris/bus/MprisNames.h"

namespace Corvella {

using namespace MprisNames;

namespace {

using Answer = PlayerAnswer<PropertyValue>;

PropertyValue nothing(sd_bus_message* /*reply*/) {
  return {};
}

/// Calls a method of the player's object, and has the reply read by `read`.
template <typename... Arguments>
Answer ask(BusConnections& connections, const BusConnections::Read& read, const std::string& owner,
           const char* interface, const char* method, const Arguments&... typesAndArguments) {
  const auto compose = [&](sd_bus* bus) {
    return methodCall(bus, owner.c_str(), kPlayerPath, interface, method, typesAndArguments...);
  };
  return connections.call(compose, read);
}

PlayerAnswer<Done> doneIn(const Answer& answer) {
  if (!answer) return answer.failure();
  return Done();
}

}  // namespace

MprisBus::MprisBus(MprisObserver& observer, const MprisDeadlines& deadlines)
    : connections_(std::make_unique<BusConnections>(deadlines)),
      watch_(
          std::make_unique<BusWatch>(observer, deadlines, [this] { connections_->closeIdle(); })) {}

MprisBus::~MprisBus() = default;

Answer MprisBus::get(const std::string& owner, const char* property) {
  return ask(*connections_, readVariant, owner, kPropertiesInterface, "Get", "ss", kPlayerInterface,
             property);
}

Answer MprisBus::identity(const std::string& owner) {
  return ask(*connections_, readVariant, owner, kPropertiesInterface, "Get", "ss", kRootInterface,
             "Identity");
}

PlayerAnswer<PropertyMap> MprisBus::getAll(const std::string& owner) {
  const auto read = [](sd_bus_message* reply) { return PropertyValue{readProperties(reply)}; };
  auto answer =
      ask(*connections_, read, owner, kPropertiesInterface, "GetAll", "s", kPlayerInterface);
  if (!answer) return answer.failure();
  return std::get<PropertyMap>(std::move(answer->content));
}

PlayerAnswer<Done> MprisBus::set(const std::string& owner, const char* property, double value) {
  return doneIn(ask(*connections_, nothing, owner, kPropertiesInterface, "Set", "ssv",
                    kPlayerInterface, property, "d", value));
}

PlayerAnswer<Done> MprisBus::rateInRhythmbox(const std::string& owner, const std::string& location,
                                             double stars) {
  const auto compose = [&](sd_bus* bus) {
    return methodCall(bus, owner.c_str(), kRhythmboxPath, kRhythmboxInterface, "SetEntryProperties",
                      "sa{sv}", location.c_str(), 1, "rating", "d", stars);
  };
  return doneIn(connections_->call(compose, nothing));
}

PlayerAnswer<Done> MprisBus::call(const std::string& owner, const char* method) {
  return doneIn(ask(*connections_, nothing, owner, kPlayerInterface, method, ""));
}

void MprisBus::probe(const std::string& owner) {
  watch_->probe(owner);
}

void MprisBus::lookLater(const std::string& owner) {
  watch_->lookLater(owner);
}

void MprisBus::raise(const std::string& owner) {
  watch_->raise(owner);
}

}  // namespace Corvella
