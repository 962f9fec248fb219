#include "fire/MadePlayer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>

#include "players/mpris/bus/MprisNames.h"

namespace Corvella {

using namespace std::chrono_literals;
using namespace MprisNames;

namespace {

constexpr double kLength = 3'600;  // Seconds.
constexpr double kMicro = 1e6;

std::string busName(const std::string& name) {
  return "org.mpris.MediaPlayer2." + name;
}

std::int64_t inMicroseconds(double seconds) {
  return static_cast<std::int64_t>(seconds * kMicro);
}

void append(sd_bus_message* message, const MadePlayer::Values& values) {
  checkBus(sd_bus_message_open_container(message, 'a', "{sv}"), "a dictionary");
  for (const auto& [key, value] : values) {
    checkBus(sd_bus_message_open_container(message, 'e', "sv"), "an entry");
    checkBus(sd_bus_message_append(message, "s", key.c_str()), "a name");
    value.appendTo(message);
    checkBus(sd_bus_message_close_container(message), "an entry");
  }
  checkBus(sd_bus_message_close_container(message), "a dictionary");
}

/// A bus that has gone, and a name that somebody else has, are nothing to a made-up player.
int ignore(sd_bus_message* /*reply*/, void* /*data*/, sd_bus_error* /*error*/) {
  return 0;
}

BusMessage signalOf(sd_bus* bus, const char* interface, const char* name) {
  sd_bus_message* message = nullptr;
  checkBus(sd_bus_message_new_signal(bus, &message, kPlayerPath, interface, name), name);
  return BusMessage(message);
}

}  // namespace

MadePlayer::MadePlayer(std::string address, int number)
    : address_(std::move(address)), number_(number) {}

std::string MadePlayer::uniqueName() const {
  const char* name = nullptr;
  if (!bus_ || sd_bus_get_unique_name(bus_.get(), &name) < 0) return {};
  return name;
}

std::uint64_t MadePlayer::unsent() const {
  std::uint64_t count = 0;
  if (bus_) sd_bus_get_n_queued_write(bus_.get(), &count);
  return count;
}

double MadePlayer::position() const {
  const std::chrono::duration<double> since = Clock::now() - then_;
  return positionThen_ + (truth_.status == "Playing" ? since.count() : 0);
}

void MadePlayer::come() {
  bus_ = connectToBus(address_);
  const auto onCall = [](sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
    guarded([&] { static_cast<MadePlayer*>(self)->receive(call); });
    return 1;
  };
  checkBus(sd_bus_add_object(bus_.get(), nullptr, kPlayerPath, onCall, this), kPlayerPath);
  takeName(name());
}

void MadePlayer::leave() {
  calls_.clear();
  bus_.reset();
  hangs_ = vanishes_ = hasVanished_ = false;
  late_ = 0ms;
  floodEnd_ = {};
}

void MadePlayer::takeName(const std::string& name) {
  if (!bus_) return;
  sd_bus_request_name_async(bus_.get(), nullptr, busName(name).c_str(), SD_BUS_NAME_QUEUE, ignore,
                            nullptr);
}

void MadePlayer::giveBackName(const std::string& name) {
  if (!bus_) return;
  sd_bus_release_name_async(bus_.get(), nullptr, busName(name).c_str(), ignore, nullptr);
}

void MadePlayer::become(const Truth& truth, double position) {
  truth_ = truth;
  positionThen_ = position;
  then_ = Clock::now();
  announce(kPlayerInterface, properties(kPlayerInterface), {});
}

void MadePlayer::pretend(const Values& lies, bool withValues) {
  std::set<std::string> names;
  for (const auto& [name, value] : lies) {
    lies_.insert_or_assign(name, value);
    names.insert(name);
  }
  const auto* const interface = names.contains("Identity") ? kRootInterface : kPlayerInterface;
  announce(interface, withValues ? lies : Values(), withValues ? std::set<std::string>() : names);
}

void MadePlayer::flood(Flood kind, std::chrono::milliseconds time) {
  flood_ = kind;
  floodedUntil_ = Clock::now();
  floodEnd_ = floodedUntil_ + time;
}

void MadePlayer::rest() {
  hangs_ = vanishes_ = false;
  late_ = 0ms;
  floodEnd_ = {};
  lies_.clear();
  for (auto& call : calls_) call.due = {};
  turn();
  announce(kRootInterface, properties(kRootInterface), {});
  become(truth_, position());
}

void MadePlayer::turn() {
  if (!bus_) return;
  constexpr int kMostMessages = 500;
  int result = 1;
  for (int i = 0; i < kMostMessages && result > 0 && !hasVanished_; ++i) {
    result = sd_bus_process(bus_.get(), nullptr);
  }
  if (result < 0 || hasVanished_) return leave();
  if (!hangs_) {
    const auto now = Clock::now();
    for (std::size_t i = calls_.size(); i > 0; --i) {
      auto call = std::move(calls_.front());
      calls_.pop_front();
      if (call.due > now) {
        calls_.push_back(std::move(call));
      } else {
        guarded([&] { answer(call.message.get()); });
      }
    }
  }
  goOnFlooding();
}

void MadePlayer::receive(sd_bus_message* call) {
  if (vanishes_) {
    hasVanished_ = true;
    return;
  }
  calls_.push_back({BusMessage(sd_bus_message_ref(call)), Clock::now() + late_});
}

void MadePlayer::answer(sd_bus_message* call) {
  const std::string method = sd_bus_message_get_member(call);
  const char* interface = "";
  const char* property = "";
  sd_bus_message* reply = nullptr;
  checkBus(sd_bus_message_new_method_return(call, &reply), "a reply");
  const BusMessage owned(reply);
  if (method == "GetAll") {
    checkBus(sd_bus_message_read(call, "s", &interface), "an interface");
    append(reply, properties(interface));
  } else if (method == "Get") {
    checkBus(sd_bus_message_read(call, "ss", &interface, &property), "a property");
    const auto all = properties(interface);
    const auto found = all.find(property);
    if (found == all.end()) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_PROPERTY, "No %s", property);
      return;
    }
    found->second.appendTo(reply);
  } else if (!obey(call, method)) {
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "No %s", method.c_str());
    return;
  }
  sd_bus_send(nullptr, reply, nullptr);
}

/// Whether it is a command that players obey.
bool MadePlayer::obey(sd_bus_message* call, const std::string& method) {
  auto truth = truth_;
  auto place = position();
  if (method == "Set") {
    const char* interface = "";
    const char* property = "";
    double number = 0;
    checkBus(sd_bus_message_read(call, "ssv", &interface, &property, "d", &number), "a value");
    number = std::clamp(number, 0.0, 1.0);
    if (property == std::string_view("Volume"))
      truth.volume = static_cast<int>(std::lround(number * 100));
    if (property == std::string_view("Rating"))
      truth.stars = static_cast<int>(std::lround(number * 5));
  } else if (method == "Play") {
    truth.status = "Playing";
  } else if (method == "Pause") {
    truth.status = "Paused";
  } else if (method == "Next" || method == "Previous") {
    truth.title += method == "Next" ? "+" : "-";
    place = 0;
  } else {
    return method == "Raise";
  }
  become(truth, place);
  return true;
}

MadePlayer::Values MadePlayer::metadata() const {
  return {{"mpris:trackid", Value::of("o", "/fire/track")},
          {"xesam:title", truth_.title},
          {"xesam:artist", Value::of("as", 1, truth_.artist.c_str())},
          {"xesam:album", "Album"},
          {"mpris:length", inMicroseconds(kLength)}};
}

MadePlayer::Values MadePlayer::properties(const std::string& interface) const {
  const bool isRoot = interface == kRootInterface;
  Values values{{"Identity", identity()}};
  if (!isRoot) {
    values = {{"PlaybackStatus", truth_.status},
              {"Metadata", metadata()},
              {"Position", inMicroseconds(position())},
              {"Volume", truth_.volume / 100.0},
              {"Rating", truth_.stars / 5.0}};
    for (const auto* ability :
         {"CanControl", "CanGoNext", "CanGoPrevious", "CanPlay", "CanPause", "CanSeek"}) {
      values.insert_or_assign(ability, Value::of("b", 1));
    }
  }
  for (const auto& [name, value] : lies_) {
    if (isRoot == (name == "Identity")) values.insert_or_assign(name, value);
  }
  return values;
}

void MadePlayer::announce(const char* interface, const Values& changed,
                          const std::set<std::string>& names) {
  if (!bus_) return;
  guarded([&] {
    const auto signal = signalOf(bus_.get(), kPropertiesInterface, "PropertiesChanged");
    checkBus(sd_bus_message_append(signal.get(), "s", interface), "an interface");
    append(signal.get(), changed);
    checkBus(sd_bus_message_open_container(signal.get(), 'a', "s"), "names");
    for (const auto& name : names) sd_bus_message_append(signal.get(), "s", name.c_str());
    checkBus(sd_bus_message_close_container(signal.get()), "names");
    sd_bus_send(bus_.get(), signal.get(), nullptr);
  });
}

void MadePlayer::goOnFlooding() {
  constexpr auto kBetween = 100us;  // 10000 a second.
  const auto now = Clock::now();
  for (; floodedUntil_ < std::min(now, floodEnd_); floodedUntil_ += kBetween) sendOneOfFlood();
}

void MadePlayer::sendOneOfFlood() {
  switch (flood_) {
    case Flood::Values:
      return announce(kPlayerInterface,
                      {{"PlaybackStatus", truth_.status}, {"Metadata", metadata()}}, {});
    case Flood::Invalidated:
      return announce(kPlayerInterface, {}, {"PlaybackStatus", "Metadata"});
    case Flood::Seeks:
      guarded([&] {
        const auto signal = signalOf(bus_.get(), kPlayerInterface, "Seeked");
        sd_bus_message_append(signal.get(), "x", inMicroseconds(position()));
        sd_bus_send(bus_.get(), signal.get(), nullptr);
      });
  }
}

}  // namespace Corvella
