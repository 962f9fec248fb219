#include "players/mpris/bus/BusWatch.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

#include <poll.h>

#include "players/mpris/bus/BusMessages.h"
#include "players/mpris/bus/MprisNames.h"
#include "players/mpris/track/TrackMetadata.h"

namespace Corvella {

using namespace MprisNames;

namespace {

constexpr std::string_view kNamePrefix = "org.mpris.MediaPlayer2.";
// This program passes on what the other players say, so that they would be listed twice.
constexpr std::string_view kProxyName = "org.mpris.MediaPlayer2.playerctld";
/// How long after a signal that differed from the player's answers it is looked at again.
constexpr std::chrono::milliseconds kUntilAnswersAgree{700};
constexpr auto kNoDeadline = std::numeric_limits<std::uint64_t>::max();

bool isPlayerName(std::string_view name) {
  return name.starts_with(kNamePrefix) && name != kProxyName;
}

bool isError(sd_bus_message* reply) {
  return sd_bus_message_get_error(reply) != nullptr;
}

/// Runs a handler that sd-bus, which is C code, calls: no exception may leave it. A message that
/// cannot be read is ignored.
template <typename Action>
void guarded(Action action) noexcept {
  try {
    action();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
  }
}

/// How long poll() may sleep before the connection has a deadline to look after: milliseconds, or
/// -1 when there is none.
int pollTimeout(sd_bus* bus) {
  std::uint64_t due = 0;  // By the monotonic clock.
  checkBus(sd_bus_get_timeout(bus, &due), "sd_bus_get_timeout");
  if (due == kNoDeadline) return -1;
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
    askForNames();
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
  // While a player is to be looked at again, the thread wakes up to see whether it is time.
  const int longest = differing_.empty() ? -1 : static_cast<int>(kUntilAnswersAgree.count());
  const int timeout = pollTimeout(bus);
  poll(descriptors.data(), descriptors.size(),
       timeout < 0 || (longest >= 0 && longest < timeout) ? longest : timeout);
  wakeUp_.clear();
  startProbes();
  startRaises();
  lookAgain();
}

void BusWatch::askForNames() {
  send(
      methodCall(connection_.get(), kBusName, kBusPath, kBusName, "ListNames", ""),
      microseconds(deadlines_.call),
      [this](sd_bus_message* reply) {
        if (isError(reply)) return;
        readTexts(reply, [this](const char* name) {
          if (isPlayerName(name)) findOwner(name);
        });
      },
      true);
}

void BusWatch::findOwner(const std::string& name) {
  send(
      methodCall(connection_.get(), kBusName, kBusPath, kBusName, "GetNameOwner", "s",
                 name.c_str()),
      microseconds(deadlines_.call),
      [this, name](sd_bus_message* reply) {
        if (isError(reply)) return;
        const char* owner = nullptr;
        checkBus(sd_bus_message_read_basic(reply, 's', &owner), "an owner");
        greet(name, owner);
      },
      true);
}

void BusWatch::greet(const std::string& name, const std::string& owner) {
  observer_.playerAppeared(name, owner);
  askStatus(owner);
  toDescribe_[owner] = std::chrono::steady_clock::now() + deadlines_.greeting;
}

/// Has a player that has answered say what it is able to do, and then who it is. One question at a
/// time: the bus allows a connection no more than 128 that are not answered, and there may be many
/// players.
void BusWatch::describe(const std::string& owner) {
  const auto entry = toDescribe_.extract(owner);
  if (!entry) return;
  // The status and these two have one deadline together: the first list waits for them.
  const auto end = entry.mapped();
  askProperties(owner, kPlayerInterface, end, [this, owner, end](const PropertyMap& properties) {
    observer_.propertiesListed(owner, properties);
    askProperties(owner, kRootInterface, end, [this, owner](const PropertyMap& identity) {
      observer_.identityListed(owner, identity);
    });
  });
}

void BusWatch::askProperties(const std::string& owner, const char* interface,
                             std::chrono::steady_clock::time_point end,
                             std::function<void(const PropertyMap&)> handler) {
  using namespace std::chrono_literals;
  const auto left = std::max<std::chrono::nanoseconds>(end - std::chrono::steady_clock::now(), 1ms);
  send(
      methodCall(connection_.get(), owner.c_str(), kPlayerPath, kPropertiesInterface, "GetAll", "s",
                 interface),
      microseconds(left),
      [handler = std::move(handler)](sd_bus_message* reply) {
        handler(isError(reply) ? PropertyMap() : readProperties(reply));
      },
      true);
}

void BusWatch::compareAnswers(const std::string& owner, const PropertyMap& told) {
  if (!observer_.isFollowed(owner)) return;
  const auto [latest, isFirst] = told_.try_emplace(owner);
  for (const auto* const name : {"PlaybackStatus", "Metadata", "Volume", "Rating"}) {
    if (const auto* const value = told.find(name)) latest->second[name] = *value;
  }
  if (!isFirst) return;  // The player answers the question under way after it sent this signal.
  send(methodCall(connection_.get(), owner.c_str(), kPlayerPath, kPropertiesInterface, "GetAll",
                  "s", kPlayerInterface),
       microseconds(deadlines_.call), [this, owner](sd_bus_message* reply) {
         const auto entry = told_.extract(owner);
         if (!isError(reply)) answersCame(owner, entry.mapped(), readProperties(reply));
       });
}

void BusWatch::answersCame(const std::string& owner, const Told& told,
                           const PropertyMap& answered) {
  // Some players do not tell when they come to be able to do something.
  observer_.propertiesListed(owner, answered);
  // It may be on its way to another track, or leave the panel to another player.
  const auto status = told.find("PlaybackStatus");
  const bool mayGoOn = status != told.end() && textOf(&status->second) == "Stopped";
  for (const auto& [name, value] : told) {
    const auto* const answer = answered.find(name);
    if (answer == nullptr || (value == *answer && !mayGoOn)) continue;
    differing_[owner] = std::chrono::steady_clock::now() + kUntilAnswersAgree;
    return;
  }
}

void BusWatch::lookAgain() {
  const auto now = std::chrono::steady_clock::now();
  std::erase_if(differing_, [&](const auto& differing) {
    if (differing.second > now) return false;
    observer_.lookAgain(differing.first);
    return true;
  });
}

void BusWatch::askStatus(const std::string& owner) {
  // One question at a time is enough: its answer comes after the signal that led here, so it is
  // not older than that signal. A flood of signals would otherwise become a flood of questions.
  if (!asked_.insert(owner).second) return;
  const auto start = std::chrono::steady_clock::now();
  send(
      methodCall(connection_.get(), owner.c_str(), kPlayerPath, kPropertiesInterface, "Get", "ss",
                 kPlayerInterface, "PlaybackStatus"),
      microseconds(deadlines_.greeting),
      [this, owner, start](sd_bus_message* reply) {
        asked_.erase(owner);
        const auto time = std::chrono::steady_clock::now() - start;
        statusReplied(owner, reply, time >= deadlines_.greeting);
      },
      true);
}

void BusWatch::statusReplied(const std::string& owner, sd_bus_message* reply, bool late) {
  if (!isError(reply)) {
    const auto status = readVariant(reply);
    observer_.playerAnswered(owner, &status);
    describe(owner);
  } else if (late) {
    observer_.playerFellSilent(owner);
    probeUntilBack(owner);
  } else {
    observer_.playerAnswered(owner, nullptr);
    describe(owner);
  }
}

void BusWatch::probeUntilBack(const std::string& owner) {
  if (!probed_.insert(owner).second) return;
  const auto start = std::chrono::steady_clock::now();
  // The question that players take longest to answer. One that answers it late would fall silent
  // again at once, and the display would change with each of its answers.
  send(methodCall(connection_.get(), owner.c_str(), kPlayerPath, kPropertiesInterface, "GetAll",
                  "s", kPlayerInterface),
       kNoDeadline, [this, owner, start](sd_bus_message* reply) {
         probed_.erase(owner);
         const auto time = std::chrono::steady_clock::now() - start;
         if (time >= deadlines_.call && observer_.knows(owner)) return probeUntilBack(owner);
         const auto properties = isError(reply) ? PropertyMap() : readProperties(reply);
         observer_.playerAnswered(owner, properties.find("PlaybackStatus"));
         describe(owner);
       });
}

void BusWatch::startProbes() {
  std::vector<std::string> owners;
  {
    const std::lock_guard lock(mutex_);
    owners.swap(toProbe_);
  }
  for (const auto& owner : owners) probeUntilBack(owner);
}

void BusWatch::startRaises() {
  std::vector<std::string> owners;
  {
    const std::lock_guard lock(mutex_);
    owners.swap(toRaise_);
  }
  for (const auto& owner : owners) {
    send(methodCall(connection_.get(), owner.c_str(), kPlayerPath, kRootInterface, "Raise", ""),
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
  if (*owner != '\0') greet(name, owner);
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
  if (statusUnknown) askStatus(owner);
  compareAnswers(owner, changed);
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

void BusWatch::send(BusMessage message, std::uint64_t deadline, ReplyHandler handler,
                    bool isOfFirstList) {
  const bool counts = isOfFirstList && !listed_ && deadline != kNoDeadline;
  auto& call = calls_.emplace_back(Call{*this, std::move(handler), counts});
  sd_bus_slot* slot = nullptr;
  checkBus(sd_bus_call_async(connection_.get(), &slot, message.get(), replied, &call, deadline),
           "sd_bus_call_async");
  call.slot.reset(slot);
  if (counts) ++outstanding_;
}

int BusWatch::replied(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) noexcept {
  auto* const call = static_cast<Call*>(data);
  auto& watch = call->watch;
  guarded([&] { call->handler(reply); });
  if (call->counts) watch.endFirstCall();
  watch.calls_.remove_if([call](const Call& other) { return &other == call; });
  return 0;
}

/// One of the calls that make up the first list has ended.
void BusWatch::endFirstCall() {
  if (--outstanding_ > 0) return;
  listed_ = true;
  observer_.playersListed();
}

}  // namespace Corvella
