#include "players/mpris/bus/WatchedConnection.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

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

WatchedConnection::WatchedConnection(MprisObserver& observer, const MprisDeadlines& deadlines)
    : observer_(observer), deadlines_(deadlines) {}

bool WatchedConnection::work() {
  auto* const bus = connection_.get();
  const bool hasWorked = checkBus(sd_bus_process(bus, nullptr), "sd_bus_process") > 0;
  if (!hasBegun_ && checkBus(sd_bus_is_ready(bus), "sd_bus_is_ready") > 0) begin();
  lookAgain();
  return hasWorked;
}

/// Not before the bus has greeted: the deadlines of the first calls count from now on.
void WatchedConnection::begin() {
  hasBegun_ = true;
  subscribe<&WatchedConnection::nameOwnerChanged>(
      "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
      "arg0namespace='org.mpris.MediaPlayer2'");
  subscribe<&WatchedConnection::propertiesChanged>(
      "type='signal',interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',"
      "path='/org/mpris/MediaPlayer2',arg0='org.mpris.MediaPlayer2.Player'");
  subscribe<&WatchedConnection::identityChanged>(
      "type='signal',interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',"
      "path='/org/mpris/MediaPlayer2',arg0='org.mpris.MediaPlayer2'");
  subscribe<&WatchedConnection::positionJumped>(
      "type='signal',interface='org.mpris.MediaPlayer2.Player',member='Seeked',"
      "path='/org/mpris/MediaPlayer2'");
  observer_.busConnected();
  introductions_.askForNames();
}

/// Has `Handle` called with every signal that matches the rule. There is no need to wait for the
/// bus's answer, because the bus takes the rule and the calls that follow it in order.
template <void (WatchedConnection::*Handle)(sd_bus_message*)>
void WatchedConnection::subscribe(const char* rule) {
  const auto handle = [](sd_bus_message* signal, void* watch, sd_bus_error* /*error*/) {
    guarded([&] { (static_cast<WatchedConnection*>(watch)->*Handle)(signal); });
    return 0;
  };
  checkBus(sd_bus_add_match_async(connection_.get(), nullptr, rule, handle, nullptr, this), rule);
}

void WatchedConnection::await(const WakeUp& wakeUp) {
  auto* const bus = connection_.get();
  const auto events = static_cast<short>(checkBus(sd_bus_get_events(bus), "sd_bus_get_events"));
  std::array<pollfd, 2> descriptors{
      pollfd{.fd = sd_bus_get_fd(bus), .events = events, .revents = 0},
      pollfd{.fd = wakeUp.descriptor(), .events = POLLIN, .revents = 0}};
  poll(descriptors.data(), descriptors.size(), pollTimeout(bus, secondLooks_.nextDue()));
  wakeUp.clear();
}

void WatchedConnection::lookAgain() {
  for (const auto& owner : secondLooks_.takeDue()) {
    // It may have lost the panel to another player by the state that it answered too early.
    introductions_.askStatus(owner);
    observer_.lookAgain(owner);
  }
}

void WatchedConnection::raise(const std::string& owner) {
  calls_.send(methodCall(calls_.bus(), owner.c_str(), kPlayerPath, kRootInterface, "Raise", ""),
              microseconds(deadlines_.call), [](sd_bus_message* /*reply*/) {});
}

void WatchedConnection::nameOwnerChanged(sd_bus_message* signal) {
  const char* name = nullptr;
  const char* before = nullptr;
  const char* owner = nullptr;
  checkBus(sd_bus_message_read(signal, "sss", &name, &before, &owner), "a name's owner");
  if (!isPlayerName(name)) return;
  if (*before != '\0') observer_.playerVanished(name);
  if (*owner != '\0') introductions_.greet(name, owner);
}

void WatchedConnection::propertiesChanged(sd_bus_message* signal) {
  // Any program may send this signal. That of one that is no player is dropped before its contents,
  // which may be large, are read.
  const auto* const sender = sd_bus_message_get_sender(signal);
  if (sender == nullptr || !observer_.knows(sender)) return;
  const std::string owner = sender;
  introductions_.heardFrom(owner);
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

void WatchedConnection::identityChanged(sd_bus_message* signal) {
  const auto* const sender = sd_bus_message_get_sender(signal);
  if (sender == nullptr || !observer_.knows(sender)) return;
  checkBus(sd_bus_message_skip(signal, "s"), "an interface");
  observer_.identityListed(sender, readProperties(signal));
}

void WatchedConnection::positionJumped(sd_bus_message* signal) {
  const auto* const sender = sd_bus_message_get_sender(signal);
  if (sender == nullptr) return;
  introductions_.heardFrom(sender);
  observer_.lookAgain(sender);
}

}  // namespace Corvella
