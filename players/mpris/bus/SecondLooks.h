#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "players/mpris/bus/BusCalls.h"
#include "players/mpris/bus/MprisBus.h"
#include "players/mpris/bus/MprisObserver.h"

namespace Corvella {

/// Finds the players that are to be looked at once more a moment after their news. Some players
/// send a signal a little before they answer with the new values, or appear a little before they
/// answer at all, so that who looks at once sees what is not so for long.
///
/// Owned by `BusWatch` and used on its thread alone.
class SecondLooks {
 public:
  /// How long after the news a player is looked at once more.
  static constexpr std::chrono::milliseconds kUntilAnswersAgree{700};

  /// `observer` and `calls` outlive this object.
  SecondLooks(MprisObserver& observer, BusCalls& calls, const MprisDeadlines& deadlines)
      : observer_(observer), calls_(calls), deadlines_(deadlines) {}

  /// Asks a player for the properties that it has just said have changed. One that answers with
  /// other values is to be looked at once more.
  void compareAnswers(const std::string& owner, const PropertyMap& told);
  /// Has a player looked at once more in any case.
  void lookLater(const std::string& owner);

  /// The players whose time has come, which are then forgotten.
  std::vector<std::string> takeDue();
  /// When the time of the next player comes; absent when no player waits.
  std::optional<std::chrono::steady_clock::time_point> nextDue() const;

 private:
  /// The properties that a player has told, by name; the newest value of each.
  using Told = std::map<std::string, PropertyValue>;

  void answersCame(const std::string& owner, const Told& told, const PropertyMap& answered);

  MprisObserver& observer_;
  BusCalls& calls_;
  const MprisDeadlines deadlines_;
  /// What players have told that are being asked for their answers to it.
  std::map<std::string, Told> told_;
  std::map<std::string, std::chrono::steady_clock::time_point> waiting_;
};

}  // namespace Corvella
