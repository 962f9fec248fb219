#include "tests/support/FakeMprisPlayer.h"

#include <cstdint>

#include <poll.h>

namespace Corvella {

namespace {

constexpr auto kObject = "/org/mpris/MediaPlayer2";
constexpr auto kRoot = "org.mpris.MediaPlayer2";
constexpr auto kPlayer = "org.mpris.MediaPlayer2.Player";
constexpr auto kRhythmbox = "/org/gnome/Rhythmbox3/RhythmDB";
constexpr auto kIdentity = "Identity";
constexpr auto kProperties = "org.freedesktop.DBus.Properties";

void replyError(sd_bus_message* call, const std::string& name) {
  sd_bus_reply_method_errorf(call, name.c_str(), "As told");
}

void reply(sd_bus_message* call, const std::function<void(sd_bus_message*)>& append) {
  sd_bus_message* message = nullptr;
  checkBus(sd_bus_message_new_method_return(call, &message), "a reply");
  const BusMessage owned(message);
  append(message);
  sd_bus_send(nullptr, message, nullptr);
}

}  // namespace

using Value = FakeMprisPlayer::Value;
using Entries = FakeMprisPlayer::Entries;

Value::Value(const std::string& text)
    : Value("s", [text](sd_bus_message* message) {
        checkBus(sd_bus_message_append(message, "s", text.c_str()), "a text");
      }) {}

Value::Value(const Entries& entries)
    : Value("a{sv}", [entries](sd_bus_message* message) {
        sd_bus_message_open_container(message, 'a', "{sv}");
        for (const auto& [key, value] : entries) {
          sd_bus_message_open_container(message, 'e', "sv");
          sd_bus_message_append(message, "s", key.c_str());
          value.appendAsVariantTo(message);
          sd_bus_message_close_container(message);
        }
        checkBus(sd_bus_message_close_container(message), "a dictionary");
      }) {}

void Value::appendAsVariantTo(sd_bus_message* message) const {
  sd_bus_message_open_container(message, 'v', type_.c_str());
  append_(message);
  checkBus(sd_bus_message_close_container(message), "a variant");
}

FakeMprisPlayer::FakeMprisPlayer(const std::string& address, const std::string& name)
    : bus_(connectToBus(address)),
      properties_{{"PlaybackStatus", "Stopped"},
                  {"Metadata", Entries()},
                  {"Position", INT64_C(0)},
                  {"Volume", 1.0}} {
  const auto onCall = [](sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
    static_cast<FakeMprisPlayer*>(self)->receive(call);
    return 1;
  };
  const auto busName = "org.mpris.MediaPlayer2." + name;
  checkBus(sd_bus_add_object(bus_.get(), nullptr, kObject, onCall, this), "sd_bus_add_object");
  checkBus(sd_bus_add_object(bus_.get(), nullptr, kRhythmbox, onCall, this), "sd_bus_add_object");
  checkBus(sd_bus_request_name(bus_.get(), busName.c_str(), 0), "sd_bus_request_name");
  thread_ = std::thread([this] { serve(); });
}

FakeMprisPlayer::~FakeMprisPlayer() {
  {
    const std::scoped_lock lock(mutex_);
    ending_ = true;
  }
  thread_.join();
}

void FakeMprisPlayer::set(const std::string& property, const Value& value) {
  const std::scoped_lock lock(mutex_);
  properties_.insert_or_assign(property, value);
}

void FakeMprisPlayer::show(const std::string& title, const std::string& status) {
  setMetadata({{"xesam:title", title},
               {"xesam:artist", Value::of("as", 2, "Someone", "Else")},
               {"xesam:album", "Somewhere"},
               {"mpris:length", INT64_C(215'500'000)}});
  set("PlaybackStatus", status);
}

void FakeMprisPlayer::remove(const std::string& property) {
  const std::scoped_lock lock(mutex_);
  properties_.erase(property);
}

void FakeMprisPlayer::announce(const std::string& property, bool withValue) {
  const std::scoped_lock lock(mutex_);
  sd_bus_message* message = nullptr;
  constexpr auto news = "PropertiesChanged";
  checkBus(sd_bus_message_new_signal(bus_.get(), &message, kObject, kProperties, news), news);
  const BusMessage owned(message);
  sd_bus_message_append(message, "s", kPlayer);
  Entries changed;
  if (withValue) changed.insert(*properties_.find(property));
  Value(changed).appendTo(message);
  sd_bus_message_append(message, "as", withValue ? 0 : 1, property.c_str());
  sd_bus_send(bus_.get(), message, nullptr);
}

void FakeMprisPlayer::behave(Behaviour behaviour) {
  const std::scoped_lock lock(mutex_);
  behaviour_ = std::move(behaviour);
  answerWaiting();
}

std::vector<std::string> FakeMprisPlayer::calls() {
  const std::scoped_lock lock(mutex_);
  return calls_;
}

void FakeMprisPlayer::forgetCalls() {
  const std::scoped_lock lock(mutex_);
  calls_.clear();
}

std::vector<FakeMprisPlayer::Write> FakeMprisPlayer::writes() {
  const std::scoped_lock lock(mutex_);
  return writes_;
}

void FakeMprisPlayer::serve() {
  // How long what a test asks for may wait.
  constexpr int milliseconds = 5;
  std::unique_lock lock(mutex_);
  while (!ending_) {
    int result = 1;
    while (bus_ && result > 0) {
      result = sd_bus_process(bus_.get(), nullptr);
      if (result < 0 || vanishing_) bus_.reset();
    }
    answerWaiting();
    pollfd file{bus_ ? sd_bus_get_fd(bus_.get()) : -1, POLLIN, 0};
    lock.unlock();
    ::poll(&file, 1, milliseconds);
    lock.lock();
  }
}

void FakeMprisPlayer::receive(sd_bus_message* call) {
  Request request{BusMessage(sd_bus_message_ref(call)), sd_bus_message_get_member(call), "", ""};
  if (request.method == "Get" || request.method == "Set") {
    const char* interface = nullptr;
    const char* property = nullptr;
    checkBus(sd_bus_message_read(call, "ss", &interface, &property), "a property");
    request.interface = interface;
    request.property = property;
  }
  if (request.method == "GetAll") {
    const char* interface = nullptr;
    checkBus(sd_bus_message_read(call, "s", &interface), "an interface");
    request.interface = interface;
  }
  calls_.push_back(request.name());
  vanishing_ = calls_.back() == behaviour_.vanishesDuring;
  if (!vanishing_) waiting_.push_back(std::move(request));
}

void FakeMprisPlayer::answerWaiting() {
  while (bus_ && !behaviour_.hangs && !waiting_.empty()) {
    answer(waiting_.front());
    waiting_.pop_front();
  }
}

void FakeMprisPlayer::answer(const Request& request) {
  const auto error = behaviour_.errors.find(request.name());
  if (error != behaviour_.errors.end()) return replyError(request.call.get(), error->second);
  if (request.method == "Get") return answerGet(request);
  if (request.method == "GetAll") return answerGetAll(request);
  if (request.method == "Set") return answerSet(request);
  if (request.method == "SetEntryProperties") return answerSetEntry(request);
  answerCommand(request);
}

void FakeMprisPlayer::answerGet(const Request& request) {
  const auto found = properties_.find(request.property);
  const auto* const interface = request.property == kIdentity ? kRoot : kPlayer;
  if (found == properties_.end() || request.interface != interface) {
    return replyError(request.call.get(), SD_BUS_ERROR_UNKNOWN_PROPERTY);
  }
  reply(request.call.get(),
        [&](sd_bus_message* message) { found->second.appendAsVariantTo(message); });
}

void FakeMprisPlayer::answerGetAll(const Request& request) {
  auto listed = properties_;
  std::erase_if(listed, [&](const auto& property) {
    return (property.first == kIdentity) != (request.interface == kRoot);
  });
  reply(request.call.get(), [&](sd_bus_message* message) { Value(listed).appendTo(message); });
}

void FakeMprisPlayer::answerSet(const Request& request) {
  double number = 0;
  const bool isNumber = sd_bus_message_read(request.call.get(), "v", "d", &number) > 0;
  if (!isNumber || !properties_.contains(request.property)) {
    return replyError(request.call.get(), SD_BUS_ERROR_INVALID_ARGS);
  }
  writes_.emplace_back(request.property, number);
  properties_.insert_or_assign(request.property, Value(number));
  sd_bus_reply_method_return(request.call.get(), nullptr);
}

/// Rhythmbox's own way of rating a track.
void FakeMprisPlayer::answerSetEntry(const Request& request) {
  const char* location = nullptr;
  const char* property = nullptr;
  double stars = 0;
  checkBus(sd_bus_message_read(request.call.get(), "sa{sv}", &location, 1, &property, "d", &stars),
           "an entry");
  writes_.emplace_back(std::string(property) + " of " + location, stars);
  sd_bus_reply_method_return(request.call.get(), nullptr);
}

void FakeMprisPlayer::answerCommand(const Request& request) {
  if (request.method == "Play" || request.method == "Pause") {
    properties_.insert_or_assign("PlaybackStatus",
                                 Value(request.method == "Play" ? "Playing" : "Paused"));
  }
  sd_bus_reply_method_return(request.call.get(), nullptr);
}

}  // namespace Corvella
