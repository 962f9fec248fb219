#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "players/MusicPlayer.h"
#include "players/mpris/MprisObserver.h"
#include "players/mpris/PropertyValue.h"

namespace Corvella {

/// What a player is able to do, as its own list of properties tells.
struct PlayerAbilities {
  bool listsVolume = false;
  bool listsRating = false;
};

/// The players on the bus, and which of them is the current one: the current one as long as it
/// plays; else one that plays; else the one that changed last, stopped ones after all others. One
/// that does not answer comes last of all.
///
/// Kept up to date by the bus's watching thread, read by any thread.
class PlayerRoster final : public MprisObserver {
 public:
  /// A player as it stands at the moment of asking.
  struct Player {
    std::string owner;
    std::string name;  ///< Well-known; one of them when it has several.
    PlayerState state = PlayerState::Stopped;
    bool silent = false;  ///< Missed a deadline and has not answered since.
    std::optional<PlayerAbilities> abilities;
  };

  /// With a `pinnedName` only players of that name count: a whole bus name, or what follows
  /// "org.mpris.MediaPlayer2." with or without a copy's ".instance…".
  explicit PlayerRoster(std::string pinnedName = {});

  /// Waits until the players that were there at the start are known, at most until the deadline.
  void awaitList(std::chrono::milliseconds deadline) const;

  /// The current player; absent when none is on the bus.
  std::optional<Player> current();

  /// All players that count, by name.
  std::vector<Player> players() const;

  /// Notes what a player answered to a caller.
  void learn(const std::string& owner, PlayerAbilities abilities);
  void learn(const std::string& owner, PlayerState state);

  /// Notes that a player missed a caller's deadline; false when that was known.
  bool fellSilent(const std::string& owner);

  void playerAppeared(const std::string& name, const std::string& owner) override;
  void playerVanished(const std::string& name) override;
  void propertiesChanged(const std::string& owner, const PropertyMap& changed) override;
  void playerAnswered(const std::string& owner, const PropertyValue* status) override;
  bool knows(const std::string& owner) const override;
  void playerFellSilent(const std::string& owner) override;
  void playersListed() override;
  void busLost() override;

 private:
  struct Entry {
    std::set<std::string> names;
    PlayerState state = PlayerState::Stopped;
    std::uint64_t lastChange = 0;
    bool silent = false;
    std::optional<PlayerAbilities> abilities;
  };
  using Entries = std::map<std::string, Entry>;

  static int rank(const Entry& entry);
  bool counts(std::string_view name) const;
  void setState(Entry& entry, PlayerState state);
  Entries::iterator choose();
  static Player snapshot(const Entries::value_type& entry);

  const std::string pinnedName_;
  mutable std::mutex mutex_;
  mutable std::condition_variable listedCondition_;
  bool listed_ = false;
  Entries entries_;
  std::string currentOwner_;
  std::uint64_t changes_ = 0;
};

}  // namespace Corvella
