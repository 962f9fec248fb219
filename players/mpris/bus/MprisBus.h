#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "players/PlayerAnswer.h"
#include "players/mpris/bus/MprisObserver.h"
#include "players/mpris/bus/PropertyValue.h"

namespace Corvella {

class BusConnections;
class BusWatch;

/// How long players are waited for.
struct MprisDeadlines {
  /// For a call, and for the connection to the bus that it may need first.
  std::chrono::milliseconds call{500};
  /// For what a player is asked when it appears: short enough that a first script, which waits for
  /// the first list, still has its own deadline before it.
  std::chrono::milliseconds greeting{300};
  /// For a bus that is missing, until it is looked for again.
  std::chrono::milliseconds missingBus{2000};
  /// For a picture from the web, which is news when it comes later.
  std::chrono::milliseconds webPicture{150};
};

/// The session bus, as far as players are concerned.
///
/// A call blocks its caller for at most a deadline. Calls may come from several threads at once:
/// each runs on a connection of its own, taken from a small store. A further connection watches the
/// players come, go and change; its thread sleeps until the bus has news.
///
/// Calls are addressed to owners (unique names), so that no call can ever start a player.
///
/// A call fails with `TimedOut` when the player or the bus does not answer in time, with
/// `NotRunning` when the owner or the bus is gone, and with `NotUnderstood` when the player answers
/// with an error or with something that cannot be read.
///
/// The bus may be missing, not answer, or end: it is looked for until it is there again.
class MprisBus {
 public:
  /// Starts to report to `observer`, which must outlive this object. Waits for nobody: whether
  /// there is a bus is part of what is reported.
  explicit MprisBus(MprisObserver& observer, const MprisDeadlines& deadlines = {});
  /// Ends the watching thread; no report comes after it.
  ~MprisBus();
  MprisBus(const MprisBus&) = delete;
  MprisBus& operator=(const MprisBus&) = delete;

  /// One property of `org.mpris.MediaPlayer2.Player`.
  PlayerAnswer<PropertyValue> get(const std::string& owner, const char* property);

  /// The property `Identity` of `org.mpris.MediaPlayer2`: what the player calls itself.
  PlayerAnswer<PropertyValue> identity(const std::string& owner);

  /// All properties of `org.mpris.MediaPlayer2.Player`.
  PlayerAnswer<PropertyMap> getAll(const std::string& owner);

  PlayerAnswer<Done> set(const std::string& owner, const char* property, double value);

  /// Has Rhythmbox, which offers no `Rating`, keep one for the track of that location, by the
  /// interface of its own library. `stars` is 0..5.
  PlayerAnswer<Done> rateInRhythmbox(const std::string& owner, const std::string& location,
                                     double stars);

  /// A method of `org.mpris.MediaPlayer2.Player` without arguments.
  PlayerAnswer<Done> call(const std::string& owner, const char* method);

  /// Has a player bring up its window (`Raise` of `org.mpris.MediaPlayer2`), if it can. Returns at
  /// once.
  void raise(const std::string& owner);

  /// Has the observer told to look at a player again a moment later. Returns at once.
  void lookLater(const std::string& owner);

  /// Asks a silent player, on the watching thread and without a deadline, whether it is back; the
  /// answer goes to the observer. Returns at once.
  void probe(const std::string& owner);

 private:
  std::unique_ptr<BusConnections> connections_;
  std::unique_ptr<BusWatch> watch_;
};

}  // namespace Corvella
