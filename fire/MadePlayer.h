#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "fire/Dice.h"
#include "players/mpris/bus/SdBus.h"
#include "tests/support/FakeMprisPlayer.h"

namespace Corvella {

/// A player as it is when it says the truth.
struct Truth {
  std::string title;
  std::string artist;
  std::string status;  ///< "Playing", "Paused" or "Stopped".
  int volume = 0;      ///< 0..100
  int stars = 0;       ///< 0..5
};

/// A made-up player that can do all that no player should. It does nothing by itself but answer,
/// which `turn` gives it the opportunity to do. Used by one thread.
class MadePlayer {
 public:
  using Clock = std::chrono::steady_clock;
  using Value = FakeMprisPlayer::Value;
  using Values = FakeMprisPlayer::Entries;

  enum class Flood : std::uint8_t { Values, Invalidated, Seeks };

  /// A player that is not on the bus yet.
  MadePlayer(std::string address, int number);

  /// What follows "org.mpris.MediaPlayer2.", and what the player calls itself.
  std::string name() const { return "fire" + std::to_string(number_); }
  std::string identity() const { return "Fire " + std::to_string(number_); }
  bool isThere() const { return bus_ != nullptr; }
  /// Its name on the bus; empty while it is not there.
  std::string uniqueName() const;
  const Truth& truth() const { return truth_; }
  /// Seconds
  double position() const;

  /// Comes to the bus with its name. Throws std::system_error.
  void come();
  /// Breaks its connection.
  void leave();
  void takeName(const std::string& name);
  void giveBackName(const std::string& name);

  /// Is something else from now on, and tells so as players do.
  void become(const Truth& truth, double position);
  /// Says something else than the truth of these properties, and tells so with the values or
  /// without them.
  void pretend(const Values& lies, bool withValues);
  void hang() { hangs_ = true; }
  void answerLate(std::chrono::milliseconds late) { late_ = late; }
  void vanishAtNextCall() { vanishes_ = true; }
  void flood(Flood kind, std::chrono::milliseconds time);
  /// From now on it says nothing but the truth, at once, and has answered all that it was asked.
  void rest();

  /// Messages that it has still to hand to the bus. A large one takes many turns.
  std::uint64_t unsent() const;

  /// Reads what came, answers what is due and goes on with its flood.
  void turn();

 private:
  struct Call {
    BusMessage message;
    Clock::time_point due;
  };

  void receive(sd_bus_message* call);
  void answer(sd_bus_message* call);
  bool obey(sd_bus_message* call, const std::string& method);
  Values properties(const std::string& interface) const;
  Values metadata() const;
  void announce(const char* interface, const Values& changed, const std::set<std::string>& names);
  void goOnFlooding();
  void sendOneOfFlood();

  const std::string address_;
  const int number_;
  BusConnection bus_;
  Truth truth_;
  double positionThen_ = 0;  // Seconds.
  Clock::time_point then_ = Clock::now();
  Values lies_;
  bool hangs_ = false;
  bool vanishes_ = false;
  bool hasVanished_ = false;
  std::chrono::milliseconds late_{};
  std::deque<Call> calls_;
  Flood flood_ = Flood::Values;
  Clock::time_point floodEnd_;
  Clock::time_point floodedUntil_;
};

}  // namespace Corvella
