#include "players/mpris/PlayerRoster.h"

#include <algorithm>
#include <utility>

#include "players/mpris/TrackMetadata.h"

namespace Corvella {

PlayerRoster::PlayerRoster(std::string pinnedName) : pinnedName_(std::move(pinnedName)) {}

void PlayerRoster::awaitList(std::chrono::milliseconds deadline) const {
  std::unique_lock lock(mutex_);
  listedCondition_.wait_for(lock, deadline, [this] { return listed_; });
}

std::optional<PlayerRoster::Player> PlayerRoster::current() {
  const std::lock_guard lock(mutex_);
  const auto chosen = choose();
  if (chosen == entries_.end()) return std::nullopt;
  currentOwner_ = chosen->first;
  return snapshot(*chosen);
}

std::vector<PlayerRoster::Player> PlayerRoster::players() const {
  std::vector<Player> players;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& entry : entries_) players.push_back(snapshot(entry));
  }
  std::sort(players.begin(), players.end(),
            [](const Player& left, const Player& right) { return left.name < right.name; });
  return players;
}

void PlayerRoster::learn(const std::string& owner, PlayerAbilities abilities) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(owner);
  if (found != entries_.end()) found->second.abilities = abilities;
}

void PlayerRoster::learn(const std::string& owner, PlayerState state) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(owner);
  if (found != entries_.end()) setState(found->second, state);
}

bool PlayerRoster::fellSilent(const std::string& owner) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(owner);
  return found != entries_.end() && !std::exchange(found->second.silent, true);
}

void PlayerRoster::playerAppeared(const std::string& name, const std::string& owner) {
  if (!counts(name)) return;
  const std::lock_guard lock(mutex_);
  auto& entry = entries_[owner];
  entry.names.insert(name);
  entry.lastChange = ++changes_;
}

void PlayerRoster::playerVanished(const std::string& name) {
  const std::lock_guard lock(mutex_);
  for (auto& [owner, entry] : entries_) entry.names.erase(name);
  std::erase_if(entries_, [](const auto& entry) { return entry.second.names.empty(); });
}

void PlayerRoster::propertiesChanged(const std::string& owner, const PropertyMap& changed) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(owner);
  if (found == entries_.end()) return;
  auto& entry = found->second;
  entry.lastChange = ++changes_;
  if (const auto* status = changed.find("PlaybackStatus")) setState(entry, stateOf(status));
  // Properties that turned up later are learned from the next whole list.
  if (changed.contains("Volume") || changed.contains("Rating")) entry.abilities.reset();
}

void PlayerRoster::playerAnswered(const std::string& owner, const PropertyValue* status) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(owner);
  if (found == entries_.end()) return;
  found->second.silent = false;
  if (status != nullptr) setState(found->second, stateOf(status));
}

void PlayerRoster::playerFellSilent(const std::string& owner) {
  fellSilent(owner);
}

void PlayerRoster::playersListed() {
  const std::lock_guard lock(mutex_);
  listed_ = true;
  listedCondition_.notify_all();
}

void PlayerRoster::busLost() {
  const std::lock_guard lock(mutex_);
  entries_.clear();
  listed_ = true;
  listedCondition_.notify_all();
}

/// Higher is better for the choice of the current player.
int PlayerRoster::rank(const Entry& entry) {
  if (entry.silent) return 0;
  switch (entry.state) {
    case PlayerState::Playing:
      return 3;
    case PlayerState::Paused:
      return 2;
    case PlayerState::Stopped:
      break;
  }
  return 1;
}

bool PlayerRoster::knows(const std::string& owner) const {
  const std::lock_guard lock(mutex_);
  return entries_.contains(owner);
}

bool PlayerRoster::counts(std::string_view name) const {
  if (pinnedName_.empty() || name == pinnedName_) return true;
  constexpr std::string_view prefix = "org.mpris.MediaPlayer2.";
  if (!name.starts_with(prefix)) return false;
  name.remove_prefix(prefix.size());
  return name == pinnedName_ || name.substr(0, name.find(".instance")) == pinnedName_;
}

void PlayerRoster::setState(Entry& entry, PlayerState state) {
  if (entry.state == state) return;
  entry.state = state;
  entry.lastChange = ++changes_;
}

PlayerRoster::Entries::iterator PlayerRoster::choose() {
  const auto current = entries_.find(currentOwner_);
  const bool keeps = current != entries_.end() && !current->second.silent &&
                     current->second.state == PlayerState::Playing;
  if (keeps) return current;
  return std::max_element(entries_.begin(), entries_.end(),
                          [](const auto& left, const auto& right) {
                            return std::pair(rank(left.second), left.second.lastChange) <
                                   std::pair(rank(right.second), right.second.lastChange);
                          });
}

PlayerRoster::Player PlayerRoster::snapshot(const Entries::value_type& entry) {
  return {.owner = entry.first,
          .name = *entry.second.names.begin(),
          .state = entry.second.state,
          .silent = entry.second.silent,
          .abilities = entry.second.abilities};
}

}  // namespace Corvella
