#include "players/mpris/BusWatch.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <limits>
#include <string_view>
#include <utility>

#include <poll.h>

#include "players/mpris/BusMessages.h"
#include "players/mpris/MprisBus.h"
#include "players/mpris/MprisNames.h"

namespace Corvella {

using namespace MprisNames;

namespace {

constexpr std::string_view kNamePrefix = "org.mpris.MediaPlayer2.";
// A proxy of the other players under a name of its own.
constexpr std::string_view kProxyName = "org.mpris.MediaPlayer2.playerctld";
// For what a player is asked when it appears: short enough that a first script, which waits for the
// first list, still has its own deadline before it.
constexpr std::chrono::milliseconds kGreetingDeadline{300};
constexpr auto kNoDeadline = std::numeric_limits<std::uint64_t>::max();

std::uint64_t microseconds(std::chrono::milliseconds time) {
  return static_cast<std::uint64_t>(std::chrono::microseconds(time).count());
}

bool isPlayerName(std::string_view name) {
  return name.starts_with(kNamePrefix) && name != kProxyName;
}

/// Handlers are called from C code, which no exception may cross: unreadable news are no news.
template <typename Action>
void guarded(Action action) noexcept {
  try {
    action();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
  }
}

}  // namespace

BusWatch::BusWatch(MprisObserver& observer)
    : observer_(observer), connection_(sdbus::createSessionBusConnection()) {
  connection_->addMatch(
      "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
      "arg0namespace='org.mpris.MediaPlayer2'",
      [this](sdbus::Message& message) { guarded([&] { nameOwnerChanged(message); }); },
      sdbus::floating_slot);
  connection_->addMatch(
      "type='signal',interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',"
      "path='/org/mpris/MediaPlayer2',arg0='org.mpris.MediaPlayer2.Player'",
      [this](sdbus::Message& message) { guarded([&] { propertiesChanged(message); }); },
      sdbus::floating_slot);
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

void BusWatch::run() {
  try {
    listPlayers();
    while (!stopping_) turn();
  } catch (const sdbus::Error&) {
    observer_.busLost();
  }
  calls_.clear();
  finishedCalls_.clear();
}

void BusWatch::turn() {
  // A flood of signals must keep neither probes nor the end waiting.
  constexpr int kMostMessages = 100;
  for (int i = 0; i < kMostMessages && connection_->processPendingRequest(); ++i) {
    finishedCalls_.clear();
  }
  finishedCalls_.clear();
  const auto data = connection_->getEventLoopPollData();
  std::array<pollfd, 2> descriptors{
      pollfd{.fd = data.fd, .events = data.events, .revents = 0},
      pollfd{.fd = wakeUp_.descriptor(), .events = POLLIN, .revents = 0}};
  poll(descriptors.data(), descriptors.size(), data.getPollTimeout());
  wakeUp_.clear();
  startProbes();
}

void BusWatch::listPlayers() {
  callAsync(kBusName, kBusPath, kBusName, "ListNames", {}, microseconds(MprisBus::kDeadline),
            [this](sdbus::Message& reply, const sdbus::Error* error) {
              std::vector<std::string> names;
              if (error == nullptr) reply >> names;
              for (const auto& name : names) {
                if (isPlayerName(name)) findOwner(name);
              }
            });
}

void BusWatch::findOwner(const std::string& name) {
  callAsync(kBusName, kBusPath, kBusName, "GetNameOwner", {name}, microseconds(MprisBus::kDeadline),
            [this, name](sdbus::Message& reply, const sdbus::Error* error) {
              if (error != nullptr) return;
              std::string owner;
              reply >> owner;
              greet(name, owner);
            });
}

void BusWatch::greet(const std::string& name, const std::string& owner) {
  observer_.playerAppeared(name, owner);
  askStatus(owner, microseconds(kGreetingDeadline));
}

void BusWatch::askStatus(const std::string& owner, std::uint64_t deadline) {
  const auto start = std::chrono::steady_clock::now();
  callAsync(owner, kPlayerPath, kPropertiesInterface, "Get", {kPlayerInterface, "PlaybackStatus"},
            deadline, [this, owner, start](sdbus::Message& reply, const sdbus::Error* error) {
              const auto time = std::chrono::steady_clock::now() - start;
              statusReplied(owner, reply, error, time >= kGreetingDeadline);
            });
}

void BusWatch::statusReplied(const std::string& owner, sdbus::Message& reply,
                             const sdbus::Error* error, bool late) {
  if (error == nullptr) {
    const auto status = readVariant(reply);
    observer_.playerAnswered(owner, &status);
  } else if (late) {
    observer_.playerFellSilent(owner);
    askStatus(owner, kNoDeadline);
  } else {
    observer_.playerAnswered(owner, nullptr);
  }
}

void BusWatch::startProbes() {
  std::vector<std::string> owners;
  {
    const std::lock_guard lock(mutex_);
    owners.swap(toProbe_);
  }
  for (const auto& owner : owners) askStatus(owner, kNoDeadline);
}

void BusWatch::nameOwnerChanged(sdbus::Message& message) {
  std::string name;
  std::string before;
  std::string owner;
  message >> name >> before >> owner;
  if (!isPlayerName(name)) return;
  if (!before.empty()) observer_.playerVanished(name);
  if (owner.empty()) return;
  greet(name, owner);
}

void BusWatch::propertiesChanged(sdbus::Message& message) {
  std::string interface;
  message >> interface;
  const auto owner = message.getSender();
  observer_.propertiesChanged(owner, readProperties(message));
  std::vector<std::string> invalidated;
  message >> invalidated;
  const bool statusUnknown =
      std::find(invalidated.begin(), invalidated.end(), "PlaybackStatus") != invalidated.end();
  if (statusUnknown && observer_.knows(owner)) askStatus(owner, microseconds(kGreetingDeadline));
}

void BusWatch::settleOne() {
  if (--outstanding_ > 0) return;
  listed_ = true;
  observer_.playersListed();
}

void BusWatch::callAsync(const std::string& destination, const std::string& path,
                         const std::string& interface, const std::string& method,
                         const std::vector<std::string>& arguments, std::uint64_t deadline,
                         ReplyHandler handler) {
  const bool counts = !listed_ && deadline != kNoDeadline;
  if (counts) ++outstanding_;
  const auto call =
      calls_.insert(calls_.end(), sdbus::createProxy(*connection_, destination, path));
  auto message = (*call)->createMethodCall(interface, method);
  for (const auto& argument : arguments) message << argument;
  (*call)->callMethod(
      message,
      [this, call, counts, handler = std::move(handler)](sdbus::MethodReply& reply,
                                                         const sdbus::Error* error) {
        guarded([&] { handler(reply, error); });
        if (counts) settleOne();
        // The proxy is still in use here; the loop lets it go.
        finishedCalls_.splice(finishedCalls_.end(), calls_, call);
      },
      deadline);
}

}  // namespace Corvella
