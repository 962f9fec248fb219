#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/BusClient.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"

namespace Corvella {

/// A music player on the bus that says and does what a test tells it to.
///
/// At first a stopped player with volume 1, position 0, empty metadata, every `Can…` true and no
/// rating. Play, Pause, PlayPause and Stop change its status; a double written to a property that
/// it has is kept. It answers on a thread of its own; its operations may be called from any thread
/// and have taken effect when they return. Calls are named as tests write them: "Next",
/// "Get Position", "Set Volume", "GetAll".
class FakeMprisPlayer {
 public:
  /// A value of any D-Bus type, also of those that no player should send. Sending throws
  /// std::system_error for what the bus cannot carry, such as text that is not UTF-8.
  class Value {
   public:
    static Value text(const std::string& value) { return basic('s', value); }
    static Value objectPath(const std::string& value) { return basic('o', value); }
    static Value boolean(bool value) { return basic('b', int{value}); }
    static Value byte(std::uint8_t value) { return basic('y', value); }
    static Value int16(std::int16_t value) { return basic('n', value); }
    static Value int32(std::int32_t value) { return basic('i', value); }
    static Value int64(std::int64_t value) { return basic('x', value); }
    static Value uint32(std::uint32_t value) { return basic('u', value); }
    static Value uint64(std::uint64_t value) { return basic('t', value); }
    static Value number(double value) { return basic('d', value); }
    static Value texts(const std::vector<std::string>& values);
    /// `type` is the D-Bus signature of each element.
    static Value array(const std::string& type, std::vector<Value> elements);
    static Value structure(std::vector<Value> members);
    static Value variant(Value value);
    /// The type of Metadata, a{sv}.
    static Value dictionary(const std::vector<std::pair<std::string, Value>>& entries);

    const std::string& signature() const { return signature_; }
    void appendTo(sd_bus_message* message) const { append_(message); }

   private:
    using Append = std::function<void(sd_bus_message*)>;
    Value(std::string signature, Append append)
        : signature_(std::move(signature)), append_(std::move(append)) {}
    template <typename Type>
    static Value basic(char type, Type value) {
      return {{type}, [type, value](sd_bus_message* message) {
                const void* data = &value;
                if constexpr (std::is_same_v<Type, std::string>) data = value.c_str();
                checkBus(sd_bus_message_append_basic(message, type, data), "a value");
              }};
    }
    static Value container(const std::string& signature, char type, const std::string& contents,
                           std::vector<Value> elements);

    std::string signature_;
    Append append_;
  };

  using Properties = std::map<std::string, Value>;

  /// A Set as it was asked for: the property, the type of the value and the value as text.
  struct Write {
    std::string property;
    std::string signature;
    std::string text;
    bool operator==(const Write&) const = default;
  };

  /// Owns org.mpris.MediaPlayer2.`name` on the bus at `address` when the constructor returns.
  FakeMprisPlayer(std::string address, const std::string& name);
  ~FakeMprisPlayer();
  FakeMprisPlayer(const FakeMprisPlayer&) = delete;
  FakeMprisPlayer& operator=(const FakeMprisPlayer&) = delete;

  const std::string& busName() const { return busName_; }

  /// Adds or changes a property, and tells nobody.
  void set(const std::string& property, Value value);
  /// Takes a property away: GetAll leaves it out, reads of it end with `error`.
  void remove(const std::string& property,
              const std::string& error = "org.freedesktop.DBus.Error.UnknownProperty");
  /// Sends PropertiesChanged for properties of the Player interface: with their values, or as
  /// invalidated where they are missing.
  void announce(const std::vector<std::string>& properties);
  /// From now on a method or a Set changes these properties and announces them, instead of what it
  /// does by itself. With none, it is answered and does nothing.
  void reactTo(const std::string& call, const Properties& changes);
  /// From now on a call is answered with an error.
  void failWith(const std::string& call, const std::string& error);

  /// Stops to answer; calls pile up.
  void hang();
  /// Answers all that waits, in order, and what comes from now on.
  void resume();
  /// From now on each call is answered, and acts, this long after it came.
  void answerAfter(std::chrono::milliseconds delay);
  /// The player leaves the bus when such a call comes, without an answer.
  void vanishDuring(const std::string& call);
  void dropName();
  /// Comes back, also after it vanished.
  void takeName();

  /// All calls received, in order, answered or not.
  std::vector<std::string> calls();
  std::ptrdiff_t received(const std::string& call) { return std::ranges::count(calls(), call); }
  void forgetCalls();
  /// All writes that were answered, refused ones too.
  std::vector<Write> writes();

 private:
  using Clock = std::chrono::steady_clock;
  struct Waiting {
    BusMessage call;
    Clock::time_point due;
  };

  /// Held by every operation; the thread looks again at all there is to do when it is let go.
  std::unique_lock<std::mutex> control();
  void serve();
  void processCalls();
  void waitForWork(std::unique_lock<std::mutex>& lock);
  void connect();
  void leaveTheBus();

  void receive(sd_bus_message* call);
  void answerWhatIsDue();
  void answer(sd_bus_message* call);
  void answerGet(sd_bus_message* call, const std::string& property);
  void answerGetAll(sd_bus_message* call, const std::string& interface);
  void answerSet(sd_bus_message* call, const std::string& property);
  void answerMethod(sd_bus_message* call, std::string method);
  void react(sd_bus_message* call, const Properties& changes);
  void sendChanged(const std::vector<std::string>& properties);
  /// Throws std::system_error for a value that cannot be sent.
  std::string textOf(const Value& value) const;

  const std::string address_;
  const std::string busName_;
  FileDescriptor wake_;
  std::mutex mutex_;  ///< Guards all that follows but the thread, sd-bus included.
  BusConnection bus_;
  Properties properties_;
  std::map<std::string, Properties> reactions_;
  std::map<std::string, std::string> errors_;
  std::string vanishCall_;
  bool vanishing_ = false;
  bool hung_ = false;
  bool ending_ = false;
  std::chrono::milliseconds delay_{0};
  std::deque<Waiting> waiting_;
  std::vector<std::string> calls_;
  std::vector<Write> writes_;
  std::thread thread_;
};

}  // namespace Corvella
