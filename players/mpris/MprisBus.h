#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "players/PlayerAnswer.h"
#include "players/mpris/MprisObserver.h"
#include "players/mpris/PropertyValue.h"

namespace Corvella {

class BusConnections;
class BusWatch;

/// The session bus, as far as players are concerned.
///
/// Calls block their callers for at most `kDeadline` and may come from several threads at once:
/// each runs on a connection of its own, taken from a small store. A further connection, with a
/// thread of its own that sleeps until the bus has news, watches the players come, go and change.
///
/// Calls are addressed to owners (unique names), so that no call can ever start a player.
/// Failures: `TimedOut`; `NotRunning` when the owner or the bus is gone; `NotUnderstood` when the
/// player answered with an error or with something unreadable.
class MprisBus {
 public:
  static constexpr std::chrono::milliseconds kDeadline{500};

  /// Connects to the session bus and starts to report to `observer`, which must outlive the bus.
  /// Throws `std::runtime_error` when no bus is reachable.
  explicit MprisBus(MprisObserver& observer);
  /// Ends the watching thread; no report comes after it.
  ~MprisBus();
  MprisBus(const MprisBus&) = delete;
  MprisBus& operator=(const MprisBus&) = delete;

  /// One property of `org.mpris.MediaPlayer2.Player`.
  PlayerAnswer<PropertyValue> get(const std::string& owner, const char* property);

  /// All properties of `org.mpris.MediaPlayer2.Player`.
  PlayerAnswer<PropertyMap> getAll(const std::string& owner);

  PlayerAnswer<Done> set(const std::string& owner, const char* property, double value);

  /// A method of `org.mpris.MediaPlayer2.Player` without arguments.
  PlayerAnswer<Done> call(const std::string& owner, const char* method);

  /// Asks a silent player, on the watching thread and without a deadline, whether it is back; the
  /// answer goes to the observer. Returns at once.
  void probe(const std::string& owner);

 private:
  std::unique_ptr<BusConnections> connections_;
  std::unique_ptr<BusWatch> watch_;
};

}  // namespace Corvella
