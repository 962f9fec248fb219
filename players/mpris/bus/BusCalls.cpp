#include "players/mpris/bus/BusCalls.h"

#include <utility>

#include "players/mpris/bus/BusMessages.h"
#include "players/mpris/bus/MprisNames.h"

namespace Corvella {

void BusCalls::send(BusMessage message, std::uint64_t deadline, ReplyHandler handler) {
  auto& call = calls_.emplace_back(Call{*this, std::move(handler)});
  sd_bus_slot* slot = nullptr;
  checkBus(sd_bus_call_async(bus_, &slot, message.get(), replied, &call, deadline),
           "sd_bus_call_async");
  call.slot.reset(slot);
}

void BusCalls::getAll(const std::string& owner, const char* interface, std::uint64_t deadline,
                      ReplyHandler handler) {
  using namespace MprisNames;
  send(methodCall(bus_, owner.c_str(), kPlayerPath, kPropertiesInterface, "GetAll", "s", interface),
       deadline, std::move(handler));
}

int BusCalls::replied(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) noexcept {
  auto* const call = static_cast<Call*>(data);
  guarded([&] { call->handler(reply); });
  call->calls.calls_.remove_if([call](const Call& other) { return &other == call; });
  // The handler may have sent a call and thereby found that the bus has ended. After a deadline
  // sd-bus would go on with its other work for 0, and abort because the connection is closing.
  constexpr int kDone = 1;
  return kDone;
}

bool isError(sd_bus_message* reply) {
  return sd_bus_message_get_error(reply) != nullptr;
}

PropertyMap listedIn(sd_bus_message* reply) {
  return isError(reply) ? PropertyMap() : readProperties(reply);
}

}  // namespace Corvella
