#include "players/mpris/MprisBus.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <limits>
#include <list>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>

#include "players/mpris/BusMessages.h"
#include "players/mpris/WakeUp.h"

namespace Corvella {

namespace {

constexpr auto kPlayerPath = "/org/mpris/MediaPlayer2";
constexpr auto kPlayerInterface = "org.mpris.MediaPlayer2.Player";
constexpr auto kPropertiesInterface = "org.freedesktop.DBus.Properties";
constexpr auto kBusName = "org.freedesktop.DBus";
constexpr auto kBusPath = "/org/freedesktop/DBus";
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

/// What an error that came instead of a reply says about the player. `late` tells whether the
/// deadline has passed: a player may send any name itself.
PlayerFailure failureOf(const sdbus::Error& error, bool late) {
  const std::string_view name = error.getName();
  if (late) return PlayerFailure::TimedOut;
  // The first three come from the bus, the others from a connection to it that broke.
  constexpr std::array<std::string_view, 6> gone{"org.freedesktop.DBus.Error.NoReply",
                                                 "org.freedesktop.DBus.Error.ServiceUnknown",
                                                 "org.freedesktop.DBus.Error.NameHasNoOwner",
                                                 "org.freedesktop.DBus.Error.Disconnected",
                                                 "System.Error.ENOTCONN",
                                                 "System.Error.EPIPE"};
  const bool isGone = std::find(gone.begin(), gone.end(), name) != gone.end();
  return isGone ? PlayerFailure::NotRunning : PlayerFailure::NotUnderstood;
}

}  // namespace

/// Connections for blocking calls, each used by one caller at a time and by no event loop.
class MprisBus::Connections {
 public:
  /// Makes a call to a player's object and reads its reply.
  template <typename Compose, typename Read>
  auto call(const std::string& owner, const char* interface, const char* method, Compose compose,
            Read read) -> PlayerAnswer<decltype(read(std::declval<sdbus::Message&>()))> {
    Connection connection;
    try {
      connection = take();
    } catch (const sdbus::Error&) {
      return PlayerFailure::NotRunning;
    }
    auto answer = callOn(*connection, owner, interface, method, compose, read);
    // Otherwise a late reply would stay in the connection's queue, or the connection is broken.
    const bool usable = answer || answer.failure() == PlayerFailure::NotUnderstood;
    if (usable) giveBack(std::move(connection));
    return answer;
  }

 private:
  using Connection = std::unique_ptr<sdbus::IConnection>;

  template <typename Compose, typename Read>
  static auto callOn(sdbus::IConnection& connection, const std::string& owner,
                     const char* interface, const char* method, Compose compose, Read read)
      -> PlayerAnswer<decltype(read(std::declval<sdbus::Message&>()))> {
    const auto start = std::chrono::steady_clock::now();
    try {
      const auto proxy = sdbus::createProxy(connection, owner, kPlayerPath);
      auto message = proxy->createMethodCall(interface, method);
      compose(message);
      auto reply = proxy->callMethod(message, microseconds(kDeadline));
      return readReply(reply, read);
    } catch (const sdbus::Error& error) {
      return failureOf(error, std::chrono::steady_clock::now() - start >= kDeadline);
    }
  }

  template <typename Read>
  static auto readReply(sdbus::Message& reply, Read read) -> PlayerAnswer<decltype(read(reply))> {
    try {
      return read(reply);
    } catch (const sdbus::Error&) {
      return PlayerFailure::NotUnderstood;
    }
  }

  Connection take() {
    {
      const std::lock_guard lock(mutex_);
      if (!idle_.empty()) {
        auto connection = std::move(idle_.back());
        idle_.pop_back();
        return connection;
      }
    }
    return sdbus::createSessionBusConnection();
  }

  void giveBack(Connection connection) {
    const std::lock_guard lock(mutex_);
    if (idle_.size() < kMostIdle) idle_.push_back(std::move(connection));
  }

  static constexpr std::size_t kMostIdle = 4;

  std::mutex mutex_;
  std::vector<Connection> idle_;
};

/// The watching connection and its thread. All of the bus library's objects here live on that
/// thread.
class MprisBus::Watch {
 public:
  explicit Watch(MprisObserver& observer)
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

  ~Watch() {
    stopping_ = true;
    wakeUp_.signal();
    thread_.join();
  }

  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  void probe(const std::string& owner) {
    {
      const std::lock_guard lock(mutex_);
      toProbe_.push_back(owner);
    }
    wakeUp_.signal();
  }

 private:
  using Proxies = std::list<std::unique_ptr<sdbus::IProxy>>;
  using ReplyHandler = std::function<void(sdbus::Message&, const sdbus::Error*)>;

  void run() {
    try {
      listPlayers();
      while (!stopping_) turn();
    } catch (const sdbus::Error&) {
      observer_.busLost();
    }
    calls_.clear();
    finishedCalls_.clear();
  }

  void turn() {
    // A flood of signals must keep neither probes nor the end waiting.
    constexpr int mostMessages = 100;
    for (int i = 0; i < mostMessages && connection_->processPendingRequest(); ++i) {
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

  void listPlayers() {
    callAsync(kBusName, kBusPath, kBusName, "ListNames", {}, microseconds(kDeadline),
              [this](sdbus::Message& reply, const sdbus::Error* error) {
                std::vector<std::string> names;
                if (error == nullptr) reply >> names;
                for (const auto& name : names) {
                  if (isPlayerName(name)) findOwner(name);
                }
              });
  }

  void findOwner(const std::string& name) {
    callAsync(kBusName, kBusPath, kBusName, "GetNameOwner", {name}, microseconds(kDeadline),
              [this, name](sdbus::Message& reply, const sdbus::Error* error) {
                if (error != nullptr) return;
                std::string owner;
                reply >> owner;
                greet(name, owner);
              });
  }

  void greet(const std::string& name, const std::string& owner) {
    observer_.playerAppeared(name, owner);
    askStatus(owner, microseconds(kGreetingDeadline));
  }

  /// Without a deadline this is the probe of a silent player.
  void askStatus(const std::string& owner, std::uint64_t deadline) {
    const auto start = std::chrono::steady_clock::now();
    callAsync(owner, kPlayerPath, kPropertiesInterface, "Get", {kPlayerInterface, "PlaybackStatus"},
              deadline, [this, owner, start](sdbus::Message& reply, const sdbus::Error* error) {
                const auto time = std::chrono::steady_clock::now() - start;
                statusReplied(owner, reply, error, time >= kGreetingDeadline);
              });
  }

  void statusReplied(const std::string& owner, sdbus::Message& reply, const sdbus::Error* error,
                     bool late) {
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

  void startProbes() {
    std::vector<std::string> owners;
    {
      const std::lock_guard lock(mutex_);
      owners.swap(toProbe_);
    }
    for (const auto& owner : owners) askStatus(owner, kNoDeadline);
  }

  void nameOwnerChanged(sdbus::Message& message) {
    std::string name;
    std::string before;
    std::string owner;
    message >> name >> before >> owner;
    if (!isPlayerName(name)) return;
    if (!before.empty()) observer_.playerVanished(name);
    if (owner.empty()) return;
    greet(name, owner);
  }

  void propertiesChanged(sdbus::Message& message) {
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

  /// One of the calls that make up the first list has ended.
  void settleOne() {
    if (--outstanding_ > 0) return;
    listed_ = true;
    observer_.playersListed();
  }

  /// Sends a call with texts as arguments; `handler` gets the reply later, on this thread.
  void callAsync(const std::string& destination, const std::string& path,
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

  /// Handlers are called from C code, which no exception may cross: unreadable news are no news.
  template <typename Action>
  static void guarded(Action action) noexcept {
    try {
      action();
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
    }
  }

  MprisObserver& observer_;
  std::unique_ptr<sdbus::IConnection> connection_;
  Proxies calls_;
  Proxies finishedCalls_;
  bool listed_ = false;
  int outstanding_ = 0;  // Calls that make up the first list of players.

  WakeUp wakeUp_;
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  std::vector<std::string> toProbe_;
  std::thread thread_;
};

MprisBus::MprisBus(MprisObserver& observer) try
    : connections_(std::make_unique<Connections>()), watch_(std::make_unique<Watch>(observer)) {
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
