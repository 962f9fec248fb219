#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "players/mpris/bus/BusCalls.h"
#include "players/mpris/bus/MprisBus.h"
#include "players/mpris/bus/MprisObserver.h"
#include "players/mpris/bus/SecondLooks.h"

namespace Corvella {

/// Makes players known to an observer: those that are on the bus at the start, those that appear
/// later, and those that answer again after they have been silent. Each is asked for its status,
/// then what it is able to do and who it is.
///
/// Owned by `BusWatch` and used on its thread alone.
class Introductions {
 public:
  /// `observer`, `calls` and `secondLooks` outlive this object.
  Introductions(MprisObserver& observer, BusCalls& calls, SecondLooks& secondLooks,
                const MprisDeadlines& deadlines)
      : observer_(observer), calls_(calls), secondLooks_(secondLooks), deadlines_(deadlines) {}

  /// Introduces all players that there are. The observer is told once all of that has ended.
  void askForNames();
  /// Introduces a player that has appeared under that name.
  void greet(const std::string& name, const std::string& owner);
  /// Asks a player for its status, unless it is being asked.
  void askStatus(const std::string& owner);
  /// Asks a silent player until it has answered in time, unless it is being asked.
  void probe(const std::string& owner);
  /// Asks a silent player once more if it has had a probe for long: one that tells something lives,
  /// and may have lost the question.
  void heardFrom(const std::string& owner);

 private:
  using TimePoint = std::chrono::steady_clock::time_point;

  struct Greeting {
    TimePoint end;  ///< Until when the player is to be described.
    bool isSecond = false;
  };

  struct Probe {
    TimePoint sent;
    std::chrono::milliseconds patience;  ///< Until a sign of life leads to the next one.
  };

  void findOwner(const std::string& name);
  void statusReplied(const std::string& owner, sd_bus_message* reply, bool late);
  void describe(const std::string& owner);
  void greetAgain(const std::string& owner);
  void sendProbe(const std::string& owner, std::chrono::milliseconds patience);
  void askProperties(const std::string& owner, const char* interface, TimePoint end,
                     std::function<void(const PropertyMap&)> handler);
  /// The handler of a call that is part of the first list, if that is not complete yet.
  BusCalls::ReplyHandler ofFirstList(BusCalls::ReplyHandler handler);

  MprisObserver& observer_;
  BusCalls& calls_;
  SecondLooks& secondLooks_;
  const MprisDeadlines deadlines_;
  std::set<std::string> asked_;  // Owners whose status has been asked for and not been answered.
  std::map<std::string, Probe> probed_;      // The last one to each owner that is silent.
  std::map<std::string, Greeting> greeted_;  // Those that have not been asked who they are.
  bool listed_ = false;
  int outstanding_ = 0;  // Calls that make up the first list of players.
};

/// Whether players bear such names.
bool isPlayerName(std::string_view name);

}  // namespace Corvella
