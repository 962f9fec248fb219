#pragma once

#include <chrono>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>

#include "fire/Dice.h"
#include "fire/HostileValues.h"
#include "fire/MadePlayer.h"
#include "fire/Strangers.h"

namespace Corvella {

/// Players that do at random what no player should, and strangers that are no players. Each thing
/// that one of them does is a line on standard output: the seconds since the start, the kind, and
/// who does it to what. Used by one thread.
class Crowd {
 public:
  Crowd(std::string address, std::uint64_t seed, HostilePlaces places);

  /// All players are there, say the truth and do nothing more; but one or the other has left.
  void rest();
  /// Until it rests again, the crowd does what it likes.
  void fire() { resting_ = false; }
  /// Whom the panel shows, by what the player calls itself: most happens to that one.
  void aimAt(const std::string& identity) { shown_ = identity; }
  /// The bus has come back: so do all players.
  void comeBack();

  /// The players that are there, as `Fields`: of each its "identity", "title", … with its name in
  /// front. "unsent" is how many messages from before have not left the crowd yet.
  std::string state() const;

  /// Does what is due. Called every few milliseconds.
  void turn();

 private:
  using Clock = MadePlayer::Clock;

  void act();
  MadePlayer& anyPlayer();
  void actOf(MadePlayer& player);
  void change(MadePlayer& player);
  void bother();
  void come(MadePlayer& player);
  void swapNames();
  void log(const std::string& kind, const std::string& what) const;
  Truth newTruth();

  const std::string address_;
  const HostilePlaces places_;
  Dice dice_;
  const Clock::time_point start_ = Clock::now();
  std::deque<MadePlayer> players_;
  std::optional<Strangers> strangers_;
  std::string shown_;
  bool resting_ = true;
  int tracks_ = 0;
  Clock::time_point next_;
  Clock::time_point nextHuge_;
};

}  // namespace Corvella
