#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <poll.h>

#include "tests/support/PrivateBus.h"

namespace Corvella {

/// A music player on the bus that says and does what a test tells it to.
///
/// At first a stopped player with volume 1, position 0, empty metadata and no rating. Play and
/// Pause change its status; a double written to a property that it has is kept. It answers on a
/// thread of its own; its operations may be called from any thread and have taken effect when they
/// return. Calls are named as tests write them: "Next", "Get Position", "Set Volume", "GetAll".
class FakeMprisPlayer {
 public:
  class Value;
  using Entries = std::map<std::string, Value>;

  /// A value of any D-Bus type, also of those that no player should send.
  class Value {
   public:
    // Implicit, so that a test writes down what a player says as it stands: texts as "s", numbers
    // as "x" and "d", the entries of Metadata as "a{sv}".
    Value(const std::string& text)
        : Value([text](sd_bus_message* message) {
            checkBus(sd_bus_message_append(message, "v", "s", text.c_str()), "a text");
          }) {}
    Value(const char* text) : Value(std::string(text)) {}
    Value(std::int64_t number) : Value(of("x", number)) {}
    Value(double number) : Value(of("d", number)) {}
    Value(const Entries& entries)
        : Value([entries](sd_bus_message* message) {
            sd_bus_message_open_container(message, 'v', "a{sv}");
            appendEntries(message, entries);
            checkBus(sd_bus_message_close_container(message), "a variant");
          }) {}

    /// Type and contents are those of sd_bus_message_append.
    template <typename... Contents>
    static Value of(const std::string& type, Contents... contents) {
      return Value([type, contents...](sd_bus_message* message) {
        checkBus(sd_bus_message_append(message, "v", type.c_str(), contents...), "a value");
      });
    }

    void appendTo(sd_bus_message* message) const { append_(message); }

   private:
    using Append = std::function<void(sd_bus_message*)>;
    explicit Value(Append append) : append_(std::move(append)) {}

    Append append_;  ///< The value as a variant.
  };

  struct Behaviour {
    bool hangs = false;     ///< Answers nothing; calls pile up until it behaves otherwise.
    std::string hangsAt{};  ///< Answers everything but such calls.
    std::string loses{};    ///< Such calls are never answered, however it behaves later.
    std::map<std::string, std::string> errors{};  ///< What calls are answered with.
    bool failsOnce = false;  ///< Each of the errors is for the first call of its name alone.
    /// The player leaves the bus for good when such a call comes, without an answer.
    std::string vanishesDuring{};
  };

  /// A Set of a double as it was asked for.
  using Write = std::pair<std::string, double>;

  /// Owns org.mpris.MediaPlayer2.`name` on the bus at `address` when the constructor returns.
  FakeMprisPlayer(const std::string& address, const std::string& name)
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
  ~FakeMprisPlayer() {
    locked([&] { ending_ = true; });
    thread_.join();
  }

  /// Adds or changes a property, and tells nobody. "Identity" is one of the player's root
  /// interface, every other one of its player interface.
  void set(const std::string& property, const Value& value) {
    locked([&] { properties_.insert_or_assign(property, value); });
  }
  void setMetadata(const Entries& entries) { set("Metadata", entries); }
  /// The same for a track of that title, 215.5 seconds long, and the status.
  void show(const std::string& title, const std::string& status) {
    setMetadata({{"xesam:title", title},
                 {"xesam:artist", Value::of("as", 2, "Someone", "Else")},
                 {"xesam:album", "Somewhere"},
                 {"mpris:length", INT64_C(215'500'000)}});
    set("PlaybackStatus", status);
  }
  /// Takes a property away: GetAll leaves it out, reads of it fail.
  void remove(const std::string& property) {
    locked([&] { properties_.erase(property); });
  }
  /// Sends PropertiesChanged for a property, with its value or as invalidated.
  void announce(const std::string& property, bool withValue = true) {
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
  /// From now on the player behaves like that, also towards calls that have piled up: they are
  /// answered when this returns, unless it hangs on.
  void behave(Behaviour behaviour) {
    const std::scoped_lock lock(mutex_);
    behaviour_ = std::move(behaviour);
    answerWaiting();
  }

  /// All calls received, in order, answered or not.
  std::vector<std::string> calls() {
    return locked([&] { return calls_; });
  }
  std::ptrdiff_t received(const std::string& call) { return std::ranges::count(calls(), call); }
  void forgetCalls() {
    locked([&] { calls_.clear(); });
  }
  /// All writes that were answered.
  std::vector<Write> writes() {
    return locked([&] { return writes_; });
  }

 private:
  static constexpr auto kIdentity = "Identity";

  struct Request {
    BusMessage call;
    std::string name;      ///< As tests write it.
    std::string property;  ///< That it is about, if any.
    bool ofRoot;           ///< Whether it is about properties of the root interface.
  };

  template <typename Action>
  std::invoke_result_t<Action> locked(Action action) {
    const std::scoped_lock lock(mutex_);
    return action();
  }
  static void appendEntries(sd_bus_message* message, const Entries& entries) {
    sd_bus_message_open_container(message, 'a', "{sv}");
    for (const auto& [key, value] : entries) {
      sd_bus_message_open_container(message, 'e', "sv");
      sd_bus_message_append(message, "s", key.c_str());
      value.appendTo(message);
      sd_bus_message_close_container(message);
    }
    checkBus(sd_bus_message_close_container(message), "a dictionary");
  }
  void serve() {
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
  void receive(sd_bus_message* call) {
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
    if (vanishing_ || name == behaviour_.loses) return;
    const bool ofRoot = interface == std::string_view("org.mpris.MediaPlayer2");
    waiting_.push_back({BusMessage(sd_bus_message_ref(call)), name, property, ofRoot});
  }
  void answerWaiting() {
    if (!bus_ || behaviour_.hangs) return;
    std::erase_if(waiting_, [this](const Request& request) {
      if (request.name == behaviour_.hangsAt) return false;
      answer(request);
      return true;
    });
  }
  void answer(const Request& request) {
    auto* const call = request.call.get();
    const auto property = properties_.find(request.property);
    const auto fail = [call](const std::string& error) {
      sd_bus_reply_method_errorf(call, error.c_str(), "As told");
    };
    sd_bus_message* reply = nullptr;
    checkBus(sd_bus_message_new_method_return(call, &reply), "a reply");
    const BusMessage owned(reply);

    const auto error = behaviour_.errors.find(request.name);
    if (error != behaviour_.errors.end()) {
      fail(error->second);
      if (behaviour_.failsOnce) behaviour_.errors.erase(error);
      return;
    }
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

  std::mutex mutex_;  ///< Guards all that follows but the thread, sd-bus included.
  BusConnection bus_;
  Entries properties_;
  Behaviour behaviour_;
  bool vanishing_ = false;
  bool ending_ = false;
  std::deque<Request> waiting_;
  std::vector<std::string> calls_;
  std::vector<Write> writes_;
  std::thread thread_;
};

}  // namespace Corvella
