#include "players/mpris/bus/BusWatch.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <system_error>
#include <utility>

#include <poll.h>

#include "players/mpris/bus/BusMessages.h"
#include "players/mpris/bus/MprisNames.h"

namespace Corvella {

using namespace MprisNames;

namespace {

/// How long poll() may sleep before the connection has a deadline to look after, or `other` has
/// come: milliseconds, or -1 when there is nothing to wait for.
int pollTimeout(sd_bus* bus, std::optional<std::chrono::steady_clock::time_point> other) {
  std::uint64_t due = 0;  // By the monotonic clock.
  checkBus(sd_bus_get_timeout(bus, &due), "sd_bus_get_timeout");
  if (other) due = std::min(due, microseconds(other->time_since_epoch()));
  if (due == BusCalls::kNoDeadline) return -1;
  const auto now = microseconds(std::chrono::steady_clock::now().time_since_epoch());
  if (due <= now) return 0;
  constexpr std::uint64_t kLongest = 60'000;
  return static_cast<int>(std::min((due - now + 999) / 1000, kLongest));
}

}  // namespace

BusWatch::BusWatch(MprisObserver& observer, const MprisDeadlines& deadlines)
    : observer_(observer),
      deadlines_(deadlines),
      connection_(connectToSessionBus(deadlines.connecting)) {
  subscribe<&BusWatch::nameOwnerChanged>(
      "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
      "arg0namespace='org.mpris.MediaPlayer2'");
  subscribe<&BusWatch::propertiesChanged>(
      "type='signal',interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',"
      "path='/org/mpris/MediaPlayer2',arg0='org.mpris.MediaPlayer2.Player'");
  subscribe<&BusWatch::identityChanged>(
      "type='signal',interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',"
      "path='/org/mpris/MediaPlayer2',arg0='org.mpris.MediaPlayer2'");
  subscribe<&BusWatch::positionJumped>(
      "type='signal',interface='org.mpris.MediaPlayer2.Player',member='Seeked',"
      "path='/org/mpris/MediaPlayer2'");
  thread_ = std::thread([this] { run(); });
}

BusWatch::~BusWatch() {
  stopping_ = true;
  wakeUp_.signal();
  thread_.join();
}

void BusWatch::probe(const std::string& owner) {
  {
    const std::lock_guard lock(mutex_);
    toProbe_.push_back(owner);
  }
  wakeUp_.signal();
}

void BusWatch::raise(const std::string& owner) {
  {
    const std::lock_guard lock(mutex_);
    toRaise_.push_back(owner);
  }
  wakeUp_.signal();
}

/// Has `Handle` called with every signal that matches the rule. There is no need to wait for the
/// bus's answer, because the bus takes the rule and the calls that follow it in order.
template <void (BusWatch::*Handle)(sd_bus_message*)>
void BusWatch::subscribe(const char* rule) {
  const auto handle = [](sd_bus_message* signal, void* watch, sd_bus_error* /*error*/) {
    guarded([&] { (static_cast<BusWatch*>(watch)->*Handle)(signal); });
    return 0;
  };
  checkBus(sd_bus_add_match_async(connection_.get(), nullptr, rule, handle, nullptr, this), rule);
}

void BusWatch::run() {
  try {
    introductions_.askForNames();
    while (!stopping_) turn();
  } catch (const std::system_error&) {
    observer_.busLost();
  }
}

void BusWatch::turn() {
  auto* const bus = connection_.get();
  // Probes and the end of this object must not wait until a flood of signals is over.
  constexpr int kMostMessages = 100;
  for (int i = 0; i < kMostMessages; ++i) {
    if (checkBus(sd_bus_process(bus, nullptr), "sd_bus_process") == 0) break;
  }
  const auto events = static_cast<short>(checkBus(sd_bus_get_events(bus), "sd_bus_get_events"));
  std::array<pollfd, 2> descriptors{
      pollfd{.fd = sd_bus_get_fd(bus), .events = events, .revents = 0},
      pollfd{.fd = wakeUp_.descriptor(), .events = POLLIN, .revents = 0}};
  poll(descriptors.data(), descriptors.size(), pollTimeout(bus, secondLooks_.nextDue()));
  wakeUp_.clear();
  startProbes();
  startRaises();
  lookAgain();
}

void BusWatch::lookAgain() {
  for (const auto& owner : secondLooks_.takeDue()) {
    // It may have lost the panel to another player by the state that it answered too early.
    introductions_.askStatus(owner);
    observer_.lookAgain(owner);
  }
}

void BusWatch::startProbes() {
  std::vector<std::string> owners;
  {
    const std::lock_guard lock(mutex_);
    owners.swap(toProbe_);
  }
  for (const auto& owner : owners) introductions_.probe(owner);
}

void BusWatch::startRaises() {
  std::vector<std::string> owners;
  {
    const std::lock_guard lock(mutex_);
    owners.swap(toRaise_);
  }
  for (const auto& owner : owners) {
    calls_.send(methodCall(calls_.bus(), owner.c_str(), kPlayerPath, kRootInterface, "Raise", ""),
                microseconds(deadlines_.call), [](sd_bus_message* /*reply*/) {});
  }
}

void BusWatch::nameOwnerChanged(sd_bus_message* signal) {
  const char* name = nullptr;
  const char* before = nullptr;
  const char* owner = nullptr;
  checkBus(sd_bus_message_read(signal, "sss", &name, &before, &owner), "a name's owner");
  if (!isPlayerName(name)) return;
  if (*before != '\0') observer_.playerVanished(name);
  if (*owner != '\0') introductions_.greet(name, owner);
}

void BusWatch::propertiesChanged(sd_bus_message* signal) {
  // Any program may send this signal. That of one that is no player is dropped before its contents,
  // which may be large, are read.
  const auto* const sender = sd_bus_message_get_sender(signal);
  if (sender == nullptr || !observer_.knows(sender)) return;
  const std::string owner = sender;
  checkBus(sd_bus_message_skip(signal, "s"), "an interface");
  const auto changed = readProperties(signal);
  std::vector<std::string> invalidated;
  readTexts(signal, [&](const char* name) { invalidated.emplace_back(name); });
  observer_.propertiesChanged(owner, changed, invalidated);
  const bool statusUnknown =
      std::find(invalidated.begin(), invalidated.end(), "PlaybackStatus") != invalidated.end();
  if (statusUnknown) introductions_.askStatus(owner);
  secondLooks_.compareAnswers(owner, changed);
}

void BusWatch::identityChanged(sd_bus_message* signal) {
  const auto* const sender = sd_bus_message_get_sender(signal);
  if (sender == nullptr || !observer_.knows(sender)) return;
  checkBus(sd_bus_message_skip(signal, "s"), "an interface");
  observer_.identityListed(sender, readProperties(signal));
}

void BusWatch::positionJumped(sd_bus_message* signal) {
  const auto* const sender = sd_bus_message_get_sender(signal);
  if (sender != nullptr) observer_.lookAgain(sender);
}

}  // namespace Corvella
