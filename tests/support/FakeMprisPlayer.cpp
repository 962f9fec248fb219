#include "tests/support/FakeMprisPlayer.h"

#include <cstdint>
#include <string_view>

#include <poll.h>

namespace Corvella {

namespace {

constexpr std::string_view kRoot = "org.mpris.MediaPlayer2";
constexpr auto kIdentity = "Identity";

void appendEntries(sd_bus_message* message, const FakeMprisPlayer::Entries& entries) {
  sd_bus_message_open_container(message, 'a', "{sv}");
  for (const auto& [key, value] : entries) {
    sd_bus_message_open_container(message, 'e', "sv");
    sd_bus_message_append(message, "s", key.c_str());
    value.appendTo(message);
    sd_bus_message_close_container(message);
  }
  checkBus(sd_bus_message_close_container(message), "a dictionary");
}

}  // namespace

FakeMprisPlayer::Value::Value(const std::string& text)
    : append_([text](sd_bus_message* message) {
        checkBus(sd_bus_message_append(message, "v", "s", text.c_str()), "a text");
      }) {}

FakeMprisPlayer::Value::Value(const Entries& entries)
    : append_([entries](sd_bus_message* message) {
        sd_bus_message_open_container(message, 'v', "a{sv}");
        appendEntries(message, entries);
        checkBus(sd_bus_message_close_container(message), "a variant");
      }) {}

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
  for (const auto* path : {"/org/mpris/MediaPlayer2", "/org/gnome/Rhythmbox3/RhythmDB"}) {
    checkBus(sd_bus_add_object(bus_.get(), nullptr, path, onCall, this), path);
  }
  checkBus(sd_bus_request_name(bus_.get(), busName.c_str(), 0), "sd_bus_request_name");
  thread_ = std::thread([this] { serve(); });
}

FakeMprisPlayer::~FakeMprisPlayer() {
  locked([&] { ending_ = true; });
  thread_.join();
}

void FakeMprisPlayer::show(const std::string& title, const std::string& status) {
  setMetadata({{"xesam:title", title},
               {"xesam:artist", Value::of("as", 2, "Someone", "Else")},
               {"xesam:album", "Somewhere"},
               {"mpris:length", INT64_C(215'500'000)}});
  set("PlaybackStatus", status);
}

void FakeMprisPlayer::announce(const std::string& property, bool withValue) {
  const std::scoped_lock lock(mutex_);
  sd_bus_message* message = nullptr;
  checkBus(sd_bus_message_new_signal(bus_.get(), &message, "/org/mpris/MediaPlayer2",
                                     "org.freedesktop.DBus.Properties", "PropertiesChanged"),
           "PropertiesChanged");
  const BusMessage owned(message);
  sd_bus_message_append(message, "s", "org.mpris.MediaPlayer2.Player");
  Entries changed;
  if (withValue) changed.insert(*properties_.find(property));
  appendEntries(message, changed);
  sd_bus_message_append(message, "as", withValue ? 0 : 1, property.c_str());
  sd_bus_send(bus_.get(), message, nullptr);
}

void FakeMprisPlayer::serve() {
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
    ::poll(&file, 1, 5);  // Milliseconds that what a test asks for may wait.
    lock.lock();
  }
}

void FakeMprisPlayer::receive(sd_bus_message* call) {
  const char* interface = "";
  const char* property = "";
  std::string name = sd_bus_message_get_member(call);
  if (name == "GetAll") checkBus(sd_bus_message_read(call, "s", &interface), "an interface");
  if (name == "Get" || name == "Set") {
    checkBus(sd_bus_message_read(call, "ss", &interface, &property), "a property");
    name.append(" ").append(property);
  }
  calls_.push_back(name);
  vanishing_ = name == behaviour_.vanishesDuring;
  if (vanishing_) return;
  waiting_.push_back({BusMessage(sd_bus_message_ref(call)), name, property, interface == kRoot});
}

void FakeMprisPlayer::answerWaiting() {
  if (!bus_ || behaviour_.hangs) return;
  std::erase_if(waiting_, [this](const Request& request) {
    if (request.name == behaviour_.hangsAt) return false;
    answer(request);
    return true;
  });
}

void FakeMprisPlayer::answer(const Request& request) {
  auto* const call = request.call.get();
  const auto property = properties_.find(request.property);
  const auto fail = [call](const std::string& error) {
    sd_bus_reply_method_errorf(call, error.c_str(), "As told");
  };
  sd_bus_message* reply = nullptr;
  checkBus(sd_bus_message_new_method_return(call, &reply), "a reply");
  const BusMessage owned(reply);

  const auto error = behaviour_.errors.find(request.name);
  if (error != behaviour_.errors.end()) return fail(error->second);
  const bool isMissing =
      property == properties_.end() || request.ofRoot != (request.property == kIdentity);
  if (!request.property.empty() && isMissing) return fail(SD_BUS_ERROR_UNKNOWN_PROPERTY);
  if (request.name.starts_with("Get ")) property->second.appendTo(reply);
  if (request.name == "GetAll") {
    auto listed = properties_;
    std::erase_if(listed,
                  [&](const auto& each) { return request.ofRoot != (each.first == kIdentity); });
    appendEntries(reply, listed);
  }
  double number = 0;
  if (request.name.starts_with("Set ")) {
    if (sd_bus_message_read(call, "v", "d", &number) <= 0) return fail(SD_BUS_ERROR_INVALID_ARGS);
    writes_.emplace_back(request.property, number);
    property->second = number;
  }
  if (request.name == "SetEntryProperties") {  // Rhythmbox's own way of rating a track.
    const char* location = nullptr;
    const char* key = nullptr;
    checkBus(sd_bus_message_read(call, "sa{sv}", &location, 1, &key, "d", &number), "an entry");
    writes_.emplace_back(std::string(key) + " of " + location, number);
  }
  if (request.name == "Play") properties_.insert_or_assign("PlaybackStatus", "Playing");
  if (request.name == "Pause") properties_.insert_or_assign("PlaybackStatus", "Paused");
  sd_bus_send(nullptr, reply, nullptr);
}

}  // namespace Corvella
