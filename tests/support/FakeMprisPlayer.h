#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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
    Value(const std::string& text);
    Value(const char* text) : Value(std::string(text)) {}
    Value(std::int64_t number) : Value(of("x", number)) {}
    Value(double number) : Value(of("d", number)) {}
    Value(const Entries& entries);

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
    std::map<std::string, std::string> errors{};  ///< What calls are answered with.
    /// The player leaves the bus for good when such a call comes, without an answer.
    std::string vanishesDuring{};
  };

  /// A Set of a double as it was asked for.
  using Write = std::pair<std::string, double>;

  /// Owns org.mpris.MediaPlayer2.`name` on the bus at `address` when the constructor returns.
  FakeMprisPlayer(const std::string& address, const std::string& name);
  ~FakeMprisPlayer();

  /// Adds or changes a property, and tells nobody. "Identity" is one of the player's root
  /// interface, every other one of its player interface.
  void set(const std::string& property, const Value& value) {
    locked([&] { properties_.insert_or_assign(property, value); });
  }
  void setMetadata(const Entries& entries) { set("Metadata", entries); }
  /// The same for a track of that title, 215.5 seconds long, and the status.
  void show(const std::string& title, const std::string& status);
  /// Takes a property away: GetAll leaves it out, reads of it fail.
  void remove(const std::string& property) {
    locked([&] { properties_.erase(property); });
  }
  /// Sends PropertiesChanged for a property, with its value or as invalidated.
  void announce(const std::string& property, bool withValue = true);
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
  void serve();
  void receive(sd_bus_message* call);
  void answerWaiting();
  void answer(const Request& request);

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
