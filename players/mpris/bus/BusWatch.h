#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "players/mpris/bus/MprisBus.h"
#include "players/mpris/bus/MprisObserver.h"
#include "players/mpris/bus/SdBus.h"
#include "players/mpris/bus/WakeUp.h"

namespace Corvella {

/// A connection to the session bus that tells an observer which players there are, and a thread
/// that sleeps until the bus has news. While that thread runs it alone uses the connection.
class BusWatch {
 public:
  /// Starts the thread. `observer` outlives this object. Throws std::system_error when the bus
  /// cannot be reached.
  BusWatch(MprisObserver& observer, const MprisDeadlines& deadlines);
  ~BusWatch();
  BusWatch(const BusWatch&) = delete;
  BusWatch& operator=(const BusWatch&) = delete;

  /// See `MprisBus::probe`. Any thread.
  void probe(const std::string& owner);
  /// See `MprisBus::raise`. Any thread.
  void raise(const std::string& owner);

 private:
  using ReplyHandler = std::function<void(sd_bus_message*)>;
  /// The properties that a player has told, by name; the newest value of each.
  using Told = std::map<std::string, PropertyValue>;

  /// A call whose reply has not come yet.
  struct Call {
    BusWatch& watch;
    ReplyHandler handler;
    bool counts;  ///< It is one of those that make up the first list of players.
    BusSlot slot{};
  };

  template <void (BusWatch::*Handle)(sd_bus_message*)>
  void subscribe(const char* rule);
  void run();
  void turn();
  void askForNames();
  void findOwner(const std::string& name);
  void greet(const std::string& name, const std::string& owner);

  void askStatus(const std::string& owner);
  void statusReplied(const std::string& owner, sd_bus_message* reply, bool late);
  /// Asks a silent player until it has answered in time.
  void probeUntilBack(const std::string& owner);
  void describe(const std::string& owner);
  /// `handler` gets an empty map from a player that does not list its properties in time.
  void askProperties(const std::string& owner, const char* interface,
                     std::chrono::steady_clock::time_point end,
                     std::function<void(const PropertyMap&)> handler);
  /// Asks a player for the properties that it has just said have changed. Some players send the
  /// signal a little before they answer with the new values; then they are looked at once more.
  void compareAnswers(const std::string& owner, const PropertyMap& told);
  void answersCame(const std::string& owner, const Told& told, const PropertyMap& answered);
  void lookAgain();
  void startProbes();
  void startRaises();
  void nameOwnerChanged(sd_bus_message* signal);
  void propertiesChanged(sd_bus_message* signal);
  void identityChanged(sd_bus_message* signal);
  void positionJumped(sd_bus_message* signal);

  /// Sends a call; `handler` gets the reply, or an error in its place, later on this thread. The
  /// first list of players is complete when all calls have ended that are part of it.
  void send(BusMessage message, std::uint64_t deadline, ReplyHandler handler,
            bool isOfFirstList = false);
  static int replied(sd_bus_message* reply, void* call, sd_bus_error* error) noexcept;
  void endFirstCall();

  MprisObserver& observer_;
  const MprisDeadlines deadlines_;
  BusConnection connection_;
  std::list<Call> calls_;
  std::set<std::string> asked_;   // Owners whose status has been asked for and not been answered.
  std::set<std::string> probed_;  // Owners that are silent.
  bool listed_ = false;
  int outstanding_ = 0;  // Calls that make up the first list of players.

  /// Players whose answers differed from what they told, and when to look at them again.
  std::map<std::string, std::chrono::steady_clock::time_point> differing_;
  /// What players have told that are being asked for their answers to it.
  std::map<std::string, Told> told_;
  /// Players that have appeared and not answered yet, and until when they are to be described.
  std::map<std::string, std::chrono::steady_clock::time_point> toDescribe_;

  WakeUp wakeUp_;
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  std::vector<std::string> toProbe_;
  std::vector<std::string> toRaise_;
  std::thread thread_;
};

}  // namespace Corvella
