#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "players/MusicPlayer.h"
#include "players/PlayerDescription.h"
#include "players/PlayerNews.h"
#include "players/mpris/KnownPlayer.h"
#include "players/mpris/bus/MprisObserver.h"
#include "players/mpris/bus/PropertyValue.h"

namespace Corvella {

/// The players on the bus, and which of them is the current one: the current one as long as it
/// plays; else one that plays; else the one that changed last, stopped ones after all others. One
/// that does not answer comes last of all.
///
/// A choice stands until `chooseCurrent` is called again, or the player leaves: the player that the
/// panel shows and the one that its buttons drive must be the same.
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

    bool operator==(const Player&) const = default;
  };

  /// With a `pinnedName` only players of that name can become the current one, or, while there is
  /// none, copies of it: those that add ".instance…" to the name. It is a whole bus name or what
  /// follows "org.mpris.MediaPlayer2."; the case of ASCII letters does not matter.
  /// `listener`, which may be null, is told the news of the current player. A player that stops
  /// playing stays the current one for the time `betweenTracks`, unless another one plays.
  explicit PlayerRoster(const std::string& pinnedName = {}, PlayerNewsListener* listener = nullptr,
                        std::chrono::milliseconds betweenTracks = std::chrono::milliseconds(600));

  /// Waits until the players that were there at the start are known or there is no bus, at most
  /// until the deadline.
  void awaitList(std::chrono::milliseconds deadline) const;

  /// Chooses the current player anew; absent when there is none.
  std::optional<Player> chooseCurrent();

  /// The player that was chosen last, or is chosen now when none was; absent when it has left.
  std::optional<Player> current();

  /// All players that can become the current one, by name.
  std::vector<Player> candidates() const;

  /// All players on the bus, by name. Where several call themselves the same, their names are added
  /// to what they call themselves.
  std::vector<PlayerDescription> descriptions() const;
  /// The current player, which is empty when there is none; the session bus in the place of a
  /// player while there is none or it does not answer.
  PlayerDescription currentDescription() const;

  // In PlayerRosterNews.cpp: what players answer to callers and tell.

  /// Notes what a player answered to a caller.
  void learn(const std::string& owner, PlayerAbilities abilities);
  void learn(const std::string& owner, PlayerState state);

  /// Notes the volume (0..100) that a player answered, and what describes its track besides the
  /// title. There are players that change these and tell nobody, and whoever shows the player
  /// compares titles alone: where the answer differs from the one before, that is news.
  void noticeVolume(const std::string& owner, int volume);
  void noticeTrack(const std::string& owner, std::string description);
  /// The same for its state.
  void noticeState(const std::string& owner, PlayerState state);
  /// Notes the position that a player answered. True once, until it moves again, when the player is
  /// believed to play and has come no further since its last answer: it may have paused without a
  /// word, or be waiting for a stream.
  bool standsStill(const std::string& owner, std::chrono::microseconds position);
  /// Notes that a player has answered with wrong types. Whether it may come to answer better: true
  /// for the first few answers, until it has news again.
  bool mayAnswerBetter(const std::string& owner);
  /// The player has been told to do something, so that its next answers are no surprise.
  void expectChange(const std::string& owner);

  /// Notes that a player missed a caller's deadline; false when that was known.
  bool fellSilent(const std::string& owner);

  void playerAppeared(const std::string& name, const std::string& owner) override;
  void playerVanished(const std::string& name) override;
  void propertiesChanged(const std::string& owner, const PropertyMap& changed,
                         const std::vector<std::string>& invalidated) override;
  void propertiesListed(const std::string& owner, const PropertyMap& properties) override;
  void identityListed(const std::string& owner, const PropertyMap& properties) override;
  void lookAgain(const std::string& owner) override;
  /// Tells that there is something new to see of the current player.
  void lookAgainAtCurrent();
  void playerAnswered(const std::string& owner, const PropertyValue* status) override;
  bool knows(const std::string& owner) const override;
  bool isFollowed(const std::string& owner) const override;
  void playerFellSilent(const std::string& owner) override;
  void playersListed() override;
  void busFound() override;
  void busConnected() override;
  void busLost() override;

  /// Whether the bus has answered and not ended since.
  bool busAnswers() const;

 private:
  using Entries = std::map<std::string, KnownPlayer>;  // By owner.
  enum class Bus : std::uint8_t { Silent, Answering, Missing };

  /// Whether the player can become the current one.
  bool counts(const KnownPlayer& player) const;
  bool isCurrent(const std::string& owner) const;
  /// Tells the news, if any. With the lock held: the listener calls nobody.
  void tell(PlayerNews news) const;
  /// Tells when the current player has left, or when the choice would fall on another one.
  void tellOfChoice();
  /// Tells that the description of the current player, in whose place the bus may stand, differs.
  void tellOfBus() const;
  void setState(KnownPlayer& player, PlayerState state);
  template <typename Value>
  void notice(const std::string& owner, std::optional<Value> KnownPlayer::*known, Value answer);
  /// The player of that owner; null when it is unknown.
  Entries::value_type* find(const std::string& owner);
  /// The player that was chosen last; null when none was, or it has left.
  const Entries::value_type* findCurrent() const;
  /// The player that is to be the current one; null when there is none.
  const Entries::value_type* choose() const;
  static Player snapshot(const Entries::value_type& entry);

  const std::string pinnedName_;
  PlayerNewsListener* const listener_;
  const std::chrono::milliseconds betweenTracks_;
  mutable std::mutex mutex_;
  mutable std::condition_variable listedCondition_;
  Bus bus_ = Bus::Silent;
  bool listed_ = false;
  Entries entries_;
  std::optional<std::string> currentOwner_;  // Absent until there is a first one to choose.
  std::string bestOwner_;                    // Whom the choice would fall on, as told last.
  bool hasChosen_ = false;   // Before the first choice there is nothing that could be wrong.
  bool leftIsTold_ = false;  // That the current player has left.
  std::uint64_t changes_ = 0;
};

}  // namespace Corvella
