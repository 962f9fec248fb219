#include "players/mpris/PlayerRoster.h"

#include <algorithm>
#include <utility>

namespace Corvella {

namespace {

/// Adds its name to the identity of each player that calls itself like another one, as copies of
/// one program do.
void tellApart(std::vector<PlayerDescription>& players) {
  std::map<std::string, int> bearers;
  for (const auto& player : players) ++bearers[player.identity];
  for (auto& player : players) {
    if (bearers[player.identity] > 1) player.identity += " (" + player.name + ")";
  }
}

}  // namespace

PlayerRoster::PlayerRoster(const std::string& pinnedName, PlayerNewsListener* listener,
                           std::chrono::milliseconds betweenTracks)
    : pinnedName_(shortName(pinnedName)), listener_(listener), betweenTracks_(betweenTracks) {}

void PlayerRoster::awaitList(std::chrono::milliseconds deadline) const {
  std::unique_lock lock(mutex_);
  listedCondition_.wait_for(lock, deadline, [this] { return listed_; });
}

std::optional<PlayerRoster::Player> PlayerRoster::chooseCurrent() {
  const std::lock_guard lock(mutex_);
  const auto* const chosen = choose();
  leftIsTold_ = false;
  hasChosen_ = true;
  bestOwner_ = chosen != nullptr ? chosen->first : "";
  if (chosen == nullptr) {
    currentOwner_.reset();
    return std::nullopt;
  }
  currentOwner_ = chosen->first;
  return snapshot(*chosen);
}

std::optional<PlayerRoster::Player> PlayerRoster::current() {
  {
    const std::lock_guard lock(mutex_);
    if (currentOwner_) {
      const auto* const held = findCurrent();
      return held != nullptr ? std::optional(snapshot(*held)) : std::nullopt;
    }
  }
  return chooseCurrent();
}

std::vector<PlayerRoster::Player> PlayerRoster::candidates() const {
  std::vector<Player> players;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& entry : entries_) {
      if (counts(entry.second)) players.push_back(snapshot(entry));
    }
  }
  std::sort(players.begin(), players.end(),
            [](const Player& left, const Player& right) { return left.name < right.name; });
  return players;
}

std::vector<PlayerDescription> PlayerRoster::descriptions() const {
  std::vector<PlayerDescription> all;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& [owner, entry] : entries_) all.push_back(entry.describe());
  }
  std::ranges::sort(all, {}, &PlayerDescription::name);
  tellApart(all);
  return all;
}

PlayerDescription PlayerRoster::currentDescription() const {
  const std::lock_guard lock(mutex_);
  if (const auto* const current = findCurrent()) return current->second.describe();
  PlayerDescription nobody;
  nobody.identity = bus_ == Bus::Answering ? pinnedName_ : "The session bus";
  // Before somebody has waited for it in vain, the bus has not had the time to answer.
  nobody.silent = bus_ == Bus::Silent && hasChosen_;
  nobody.known = hasChosen_;
  return nobody;
}

bool PlayerRoster::isCurrent(const std::string& owner) const {
  return currentOwner_ == owner;
}

/// A copy of the pinned player stands in for it only while nobody bears the name itself: else the
/// first of two copies could not be chosen.
bool PlayerRoster::counts(const KnownPlayer& player) const {
  if (pinnedName_.empty() || player.isCalled(pinnedName_)) return true;
  const auto isCalled = [this](const auto& entry) { return entry.second.isCalled(pinnedName_); };
  return player.isCopyOf(pinnedName_) && std::ranges::none_of(entries_, isCalled);
}

void PlayerRoster::setState(KnownPlayer& player, PlayerState state) {
  if (player.changeState(state)) player.lastChange = ++changes_;
}

PlayerRoster::Entries::value_type* PlayerRoster::find(const std::string& owner) {
  const auto found = entries_.find(owner);
  return found != entries_.end() ? &*found : nullptr;
}

/// A current player that does not count any more, because it has given up the pinned name or the
/// one whose copy it is has come, has left as far as anyone can see.
const PlayerRoster::Entries::value_type* PlayerRoster::findCurrent() const {
  const auto found = entries_.find(currentOwner_.value_or(""));
  return found != entries_.end() && counts(found->second) ? &*found : nullptr;
}

const PlayerRoster::Entries::value_type* PlayerRoster::choose() const {
  const auto* const current = findCurrent();
  const bool keeps = current != nullptr && !current->second.silent &&
                     current->second.state == PlayerState::Playing;
  if (keeps) return current;
  const Entries::value_type* best = nullptr;
  const auto standing = [](const KnownPlayer& player) {
    return std::pair(player.rank(), player.lastChange);
  };
  for (const auto& each : entries_) {
    if (!counts(each.second)) continue;
    if (best == nullptr || standing(best->second) < standing(each.second)) best = &each;
  }
  // A player that is only paused must not take over the panel and its buttons meanwhile.
  const bool onlyPauses = current != nullptr && current->second.isBetweenTracks(betweenTracks_) &&
                          best->second.state != PlayerState::Playing;
  return onlyPauses ? current : best;
}

PlayerRoster::Player PlayerRoster::snapshot(const Entries::value_type& entry) {
  return {.owner = entry.first,
          .name = *entry.second.names.begin(),
          .state = entry.second.state,
          .silent = entry.second.silent,
          .abilities = entry.second.abilities};
}

}  // namespace Corvella
