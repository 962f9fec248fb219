#include "players/mpris/bus/Introductions.h"

#include <utility>

#include "players/mpris/bus/BusMessages.h"
#include "players/mpris/bus/MprisNames.h"

namespace Corvella {

using namespace MprisNames;

namespace {

constexpr std::string_view kNamePrefix = "org.mpris.MediaPlayer2.";
// This program passes on what the other players say, so that they would be listed twice.
constexpr std::string_view kProxyName = "org.mpris.MediaPlayer2.playerctld";

}  // namespace

bool isPlayerName(std::string_view name) {
  return name.starts_with(kNamePrefix) && name != kProxyName;
}

void Introductions::askForNames() {
  calls_.send(methodCall(calls_.bus(), kBusName, kBusPath, kBusName, "ListNames", ""),
              microseconds(deadlines_.call), ofFirstList([this](sd_bus_message* reply) {
                if (isError(reply)) return;
                readTexts(reply, [this](const char* name) {
                  if (isPlayerName(name)) findOwner(name);
                });
              }));
}

void Introductions::findOwner(const std::string& name) {
  calls_.send(
      methodCall(calls_.bus(), kBusName, kBusPath, kBusName, "GetNameOwner", "s", name.c_str()),
      microseconds(deadlines_.call), ofFirstList([this, name](sd_bus_message* reply) {
        if (isError(reply)) return;
        const char* owner = nullptr;
        checkBus(sd_bus_message_read_basic(reply, 's', &owner), "an owner");
        greet(name, owner);
      }));
}

void Introductions::greet(const std::string& name, const std::string& owner) {
  observer_.playerAppeared(name, owner);
  askStatus(owner);
  greeted_[owner] = {.end = std::chrono::steady_clock::now() + deadlines_.greeting};
}

void Introductions::askStatus(const std::string& owner) {
  // One question at a time is enough: its answer comes after the signal that led here, so it is
  // not older than that signal. A flood of signals would otherwise become a flood of questions.
  if (asked_.contains(owner)) return;
  const auto start = std::chrono::steady_clock::now();
  calls_.send(methodCall(calls_.bus(), owner.c_str(), kPlayerPath, kPropertiesInterface, "Get",
                         "ss", kPlayerInterface, "PlaybackStatus"),
              microseconds(deadlines_.greeting),
              ofFirstList([this, owner, start](sd_bus_message* reply) {
                asked_.erase(owner);
                const auto time = std::chrono::steady_clock::now() - start;
                statusReplied(owner, reply, time >= deadlines_.greeting);
              }));
  asked_.insert(owner);  // Not before: a question that cannot be sent is asked again next time.
}

void Introductions::statusReplied(const std::string& owner, sd_bus_message* reply, bool late) {
  if (!isError(reply)) {
    const auto status = readVariant(reply);
    observer_.playerAnswered(owner, &status);
    describe(owner);
  } else if (late) {
    observer_.playerFellSilent(owner);
    probe(owner);
  } else {
    observer_.playerAnswered(owner, nullptr);
    greetAgain(owner);
  }
}

/// Some players take their name a moment before they answer under it, and do not tell when they do.
void Introductions::greetAgain(const std::string& owner) {
  const auto greeting = greeted_.find(owner);
  const bool isFirst = greeting != greeted_.end() && !greeting->second.isSecond;
  describe(owner);
  if (!isFirst) return;
  secondLooks_.lookLater(owner);
  const auto when = std::chrono::steady_clock::now() + SecondLooks::kUntilAnswersAgree;
  greeted_[owner] = {.end = when + deadlines_.greeting, .isSecond = true};
}

void Introductions::probe(const std::string& owner) {
  if (!probed_.contains(owner)) sendProbe(owner, deadlines_.call);
}

/// A player that sends signals and never answers must not gather questions, so the pauses grow.
void Introductions::heardFrom(const std::string& owner) {
  const auto probe = probed_.find(owner);
  if (probe == probed_.end()) return;
  const auto [sent, patience] = probe->second;
  if (std::chrono::steady_clock::now() - sent >= patience) sendProbe(owner, 2 * patience);
}

void Introductions::sendProbe(const std::string& owner, std::chrono::milliseconds patience) {
  const auto sent = std::chrono::steady_clock::now();
  // The question that players take longest to answer. One that answers it late would fall silent
  // again at once, and the display would change with each of its answers.
  const auto replied = [this, owner, sent, patience](sd_bus_message* reply) {
    const auto last = probed_.find(owner);
    if (last == probed_.end() || last->second.sent != sent) return;  // It has been asked again.
    probed_.erase(last);
    const bool late = std::chrono::steady_clock::now() - sent >= deadlines_.call;
    if (late && observer_.knows(owner)) return sendProbe(owner, patience);
    const auto properties = listedIn(reply);
    observer_.playerAnswered(owner, properties.find("PlaybackStatus"));
    describe(owner);
  };
  calls_.getAll(owner, kPlayerInterface, BusCalls::kNoDeadline, replied);
  probed_[owner] = {.sent = sent, .patience = patience};
}

/// Has a player that has answered say what it is able to do, and then who it is. One question at a
/// time: the bus allows a connection no more than 128 that are not answered, and there may be many
/// players.
void Introductions::describe(const std::string& owner) {
  const auto greeting = greeted_.extract(owner);
  if (!greeting) return;
  // The status and these two have one deadline together: the first list waits for them.
  const auto end = greeting.mapped().end;
  askProperties(owner, kPlayerInterface, end, [this, owner, end](const PropertyMap& properties) {
    observer_.propertiesListed(owner, properties);
    askProperties(owner, kRootInterface, end, [this, owner](const PropertyMap& identity) {
      observer_.identityListed(owner, identity);
    });
  });
}

/// What a player lists only after `end` is taken all the same, because it would otherwise be shown
/// without its identity for as long as it runs. But the first list does not wait for it. `handler`
/// gets an empty map from a player that lists nothing.
void Introductions::askProperties(const std::string& owner, const char* interface, TimePoint end,
                                  std::function<void(const PropertyMap&)> handler) {
  const auto left = end - std::chrono::steady_clock::now();
  if (left <= TimePoint::duration::zero()) {
    return calls_.getAll(
        owner, interface, BusCalls::kNoDeadline,
        [handler = std::move(handler)](sd_bus_message* reply) { handler(listedIn(reply)); });
  }
  const auto replied = [this, owner, interface, end,
                        handler = std::move(handler)](sd_bus_message* reply) {
    const bool late = isError(reply) && std::chrono::steady_clock::now() >= end;
    if (late) return askProperties(owner, interface, end, handler);
    handler(listedIn(reply));
  };
  calls_.getAll(owner, interface, microseconds(left), ofFirstList(replied));
}

BusCalls::ReplyHandler Introductions::ofFirstList(BusCalls::ReplyHandler handler) {
  if (listed_) return handler;
  ++outstanding_;
  return [this, handler = std::move(handler)](sd_bus_message* reply) {
    // A reply that cannot be read has ended all the same.
    guarded([&] { handler(reply); });
    if (--outstanding_ > 0) return;
    listed_ = true;
    observer_.playersListed();
  };
}

}  // namespace Corvella
