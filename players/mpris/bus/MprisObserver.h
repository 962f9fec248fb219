#pragma once

#include <string>
#include <vector>

#include "players/mpris/bus/PropertyValue.h"

namespace Corvella {

/// Is told what happens to the players on the bus. Every call comes on the bus's watching thread.
///
/// A `name` is a well-known name such as "org.mpris.MediaPlayer2.mpv", an `owner` the unique name
/// of the connection behind it.
class MprisObserver {
 public:
  virtual ~MprisObserver() = default;

  virtual void playerAppeared(const std::string& name, const std::string& owner) = 0;
  virtual void playerVanished(const std::string& name) = 0;

  /// Some properties have other values now: those of `changed`, and those of `invalidated`, whose
  /// values have to be asked for. Players may leave out any of them.
  virtual void propertiesChanged(const std::string& owner, const PropertyMap& changed,
                                 const std::vector<std::string>& invalidated) = 0;

  /// All properties of `org.mpris.MediaPlayer2.Player`, as the player listed them when it appeared
  /// or was looked at again, and those of `org.mpris.MediaPlayer2`, all or the changed ones. Some
  /// players never list theirs.
  virtual void propertiesListed(const std::string& owner, const PropertyMap& properties) = 0;
  virtual void identityListed(const std::string& owner, const PropertyMap& properties) = 0;

  /// The player is to be looked at again: its position has jumped, or what it answers differs from
  /// what it told a moment ago.
  virtual void lookAgain(const std::string& owner) = 0;

  /// The playback status that a player answered when it appeared or was probed; absent when it
  /// answered with an error.
  virtual void playerAnswered(const std::string& owner, const PropertyValue* status) = 0;

  /// Whether the owner is a player that appeared and has not vanished.
  virtual bool knows(const std::string& owner) const = 0;

  /// Whether somebody may want to see what becomes of this player.
  virtual bool isFollowed(const std::string& owner) const = 0;

  /// A player did not answer in time; it is being probed.
  virtual void playerFellSilent(const std::string& owner) = 0;

  /// All players that were there at the start have been reported.
  virtual void playersListed() = 0;

  /// There is a bus, which has not answered yet.
  virtual void busFound() = 0;

  /// The bus answers; the players that there are on it will be reported.
  virtual void busConnected() = 0;

  /// There is no bus, or it is gone, and every player with it. May come again and again.
  virtual void busLost() = 0;
};

}  // namespace Corvella
