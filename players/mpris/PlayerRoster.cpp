#include "players/mpris/PlayerRoster.h"

#include <algorithm>
#include <utility>

#include "players/AsciiText.h"
#include "players/mpris/track/TrackMetadata.h"

namespace Corvella {

namespace {

constexpr std::string_view kNamePrefix = "org.mpris.MediaPlayer2.";

bool isListed(const std::vector<std::string>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// Takes over a yes or no; what is neither leaves things as they are.
void readFlag(const PropertyMap& properties, std::string_view name, bool& flag) {
  const auto* const value = properties.find(name);
  if (value == nullptr) return;
  if (const auto* const said = std::get_if<bool>(&value->content)) flag = *said;
}

void readFlags(const PropertyMap& properties, PlayerDescription& description) {
  readFlag(properties, "CanControl", description.canControl);
  readFlag(properties, "CanGoNext", description.canGoNext);
  readFlag(properties, "CanGoPrevious", description.canGoPrevious);
  readFlag(properties, "CanPlay", description.canPlay);
  readFlag(properties, "CanPause", description.canPause);
}

/// What `--player` takes for a bus name, which users may have written in any case.
std::string shortName(std::string_view name) {
  if (sameText(name.substr(0, kNamePrefix.size()), kNamePrefix)) {
    name.remove_prefix(kNamePrefix.size());
  }
  return std::string(name);
}

/// The name that a copy of a player adds ".instance…" to; the name itself of one that is no copy.
std::string originalName(const std::string& name) {
  return name.substr(0, name.find(".instance"));
}

/// The news that a player has changed that is in this state now.
PlayerNews newsOf(PlayerState state) {
  return state == PlayerState::Playing ? PlayerNews::Changed : PlayerNews::Halted;
}

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
    for (const auto& [owner, entry] : entries_) all.push_back(describe(entry));
  }
  std::ranges::sort(all, {}, &PlayerDescription::name);
  tellApart(all);
  return all;
}

PlayerDescription PlayerRoster::currentDescription() const {
  const std::lock_guard lock(mutex_);
  if (const auto* const current = findCurrent()) return describe(current->second);
  PlayerDescription nobody;
  nobody.identity = pinnedName_;
  nobody.known = hasChosen_;
  return nobody;
}

PlayerDescription PlayerRoster::describe(const Entry& entry) {
  auto description = entry.description;
  description.name = shortName(*entry.names.begin());
  description.keepsRating |= isRhythmbox(*entry.names.begin());
  if (description.identity.empty()) description.identity = description.name;
  description.silent = entry.silent;
  description.playing = entry.state == PlayerState::Playing;
  return description;
}

void PlayerRoster::tell(PlayerNews news) const {
  if (listener_ != nullptr) listener_->playerNews(news);
}

void PlayerRoster::tellOfChoice() {
  if (!listed_) return;  // The first choice waits for the whole list.
  if (currentOwner_ && findCurrent() == nullptr) {
    if (!std::exchange(leftIsTold_, true)) tell(PlayerNews::Left);
    return;
  }
  const auto* const best = choose();
  if (best == nullptr || std::exchange(bestOwner_, best->first) == best->first) return;
  if (hasChosen_ && currentOwner_ != bestOwner_) tell(PlayerNews::Changed);
}

bool PlayerRoster::isCurrent(const std::string& owner) const {
  return currentOwner_ == owner;
}

void PlayerRoster::learn(const std::string& owner, PlayerAbilities abilities) {
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  if (found == nullptr) return;
  auto& entry = found->second;
  entry.abilities = abilities;
  const auto before = entry.description;
  entry.description.keepsVolume = abilities.listsVolume;
  entry.description.keepsRating = abilities.listsRating;
  if (entry.description != before && isCurrent(owner)) tell(PlayerNews::Described);
}

void PlayerRoster::learn(const std::string& owner, PlayerState state) {
  const std::lock_guard lock(mutex_);
  if (auto* const found = find(owner)) setState(found->second, state);
}

template <typename Value>
void PlayerRoster::notice(const std::string& owner, std::optional<Value> Entry::*known,
                          Value answer) {
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  if (found == nullptr) return;
  auto& before = found->second.*known;
  const bool differs = before && *before != answer;
  before = std::move(answer);
  if (differs && isCurrent(owner)) tell(PlayerNews::Changed);
}

void PlayerRoster::noticeVolume(const std::string& owner, int volume) {
  notice(owner, &Entry::volume, volume);
}

void PlayerRoster::noticeTrack(const std::string& owner, std::string description) {
  notice(owner, &Entry::track, std::move(description));
}

void PlayerRoster::noticeState(const std::string& owner, PlayerState state) {
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  if (found == nullptr || found->second.state == state) return;
  setState(found->second, state);
  if (isCurrent(owner)) tell(newsOf(state));
  tellOfChoice();
}

bool PlayerRoster::standsStill(const std::string& owner, std::chrono::microseconds position) {
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  if (found == nullptr) return false;
  auto& entry = found->second;
  const bool moved = std::exchange(entry.position, position) != position;
  const bool isKnown = std::exchange(entry.standsStill, !moved);
  return !moved && !isKnown && entry.state == PlayerState::Playing;
}

void PlayerRoster::expectChange(const std::string& owner) {
  const std::lock_guard lock(mutex_);
  if (auto* const found = find(owner)) found->second.forgetAnswers();
}

bool PlayerRoster::fellSilent(const std::string& owner) {
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  if (found == nullptr || std::exchange(found->second.silent, true)) return false;
  if (isCurrent(owner)) tell(PlayerNews::Described);
  tellOfChoice();
  return true;
}

void PlayerRoster::playerAppeared(const std::string& name, const std::string& owner) {
  const std::lock_guard lock(mutex_);
  auto& entry = entries_[owner];
  entry.names.insert(name);
  entry.lastChange = ++changes_;
  tellOfChoice();
}

void PlayerRoster::playerVanished(const std::string& name) {
  const std::lock_guard lock(mutex_);
  for (auto& [owner, entry] : entries_) entry.names.erase(name);
  std::erase_if(entries_, [](const auto& entry) { return entry.second.names.empty(); });
  tellOfChoice();
}

void PlayerRoster::propertiesChanged(const std::string& owner, const PropertyMap& changed,
                                     const std::vector<std::string>& invalidated) {
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  if (found == nullptr) return;
  auto& entry = found->second;
  entry.lastChange = ++changes_;
  entry.forgetAnswers();
  const auto described = describe(entry);
  if (const auto* status = changed.find("PlaybackStatus")) setState(entry, stateOf(status));
  // Properties that turned up later are learned from the next whole list.
  if (changed.contains("Volume") || changed.contains("Rating")) entry.abilities.reset();
  readFlags(changed, entry.description);
  if (isCurrent(owner)) {
    if (describe(entry) != described) tell(PlayerNews::Described);
    for (const auto* const name : {"PlaybackStatus", "Metadata", "Volume", "Rating"}) {
      if (changed.contains(name) || isListed(invalidated, name)) {
        tell(newsOf(entry.state));
        break;
      }
    }
  }
  tellOfChoice();
}

void PlayerRoster::propertiesListed(const std::string& owner, const PropertyMap& properties) {
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  if (found == nullptr) return;
  auto& entry = found->second;
  const auto before = entry.description;
  readFlags(properties, entry.description);
  // Of a player that lists nothing no more is known than before.
  if (properties.contains("PlaybackStatus")) {
    entry.description.keepsVolume = properties.contains("Volume");
    entry.description.keepsRating = properties.contains("Rating");
  }
  if (entry.description != before && isCurrent(owner)) tell(PlayerNews::Described);
}

void PlayerRoster::identityListed(const std::string& owner, const PropertyMap& properties) {
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  if (found == nullptr) return;
  auto& description = found->second.description;
  if (const auto* identity = properties.find("Identity")) description.identity = textOf(identity);
  readFlag(properties, "CanRaise", description.canRaise);
  if (isCurrent(owner)) tell(PlayerNews::Described);
}

void PlayerRoster::lookAgain(const std::string& owner) {
  const std::lock_guard lock(mutex_);
  if (isCurrent(owner)) tell(PlayerNews::Changed);
}

void PlayerRoster::lookAgainAtCurrent() {
  const std::lock_guard lock(mutex_);
  if (currentOwner_) tell(PlayerNews::Changed);
}

void PlayerRoster::playerAnswered(const std::string& owner, const PropertyValue* status) {
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  if (found == nullptr) return;
  const bool wasSilent = std::exchange(found->second.silent, false);
  if (status != nullptr) setState(found->second, stateOf(status));
  // What was shown of it while it was silent may be wrong.
  if (wasSilent && isCurrent(owner)) tell(PlayerNews::Changed);
  tellOfChoice();
}

void PlayerRoster::playerFellSilent(const std::string& owner) {
  fellSilent(owner);
}

void PlayerRoster::playersListed() {
  const std::lock_guard lock(mutex_);
  listed_ = true;
  listedCondition_.notify_all();
  tellOfChoice();
}

void PlayerRoster::busLost() {
  const std::lock_guard lock(mutex_);
  entries_.clear();
  listed_ = true;
  listedCondition_.notify_all();
  tellOfChoice();
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

/// Not the current player alone: the news may be why another one is chosen, and the choice is made
/// only after the watching thread has heard them.
bool PlayerRoster::isFollowed(const std::string& owner) const {
  if (listener_ == nullptr || !listener_->isListening()) return false;
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(owner);
  return found != entries_.end() && counts(found->second);
}

bool PlayerRoster::knows(const std::string& owner) const {
  const std::lock_guard lock(mutex_);
  return entries_.contains(owner);
}

/// Whether the player bears the pinned name itself.
bool PlayerRoster::isPinned(const Entry& entry) const {
  return std::ranges::any_of(entry.names, [this](const std::string& name) {
    return sameText(shortName(name), pinnedName_);
  });
}

/// A copy of the pinned player stands in for it only while nobody bears the name itself: else the
/// first of two copies could not be chosen.
bool PlayerRoster::counts(const Entry& entry) const {
  if (pinnedName_.empty() || isPinned(entry)) return true;
  const bool isCopy = std::ranges::any_of(entry.names, [this](const std::string& name) {
    return sameText(originalName(shortName(name)), pinnedName_);
  });
  return isCopy && std::ranges::none_of(
                       entries_, [this](const auto& other) { return isPinned(other.second); });
}

void PlayerRoster::setState(Entry& entry, PlayerState state) {
  if (entry.state == state) return;
  entry.stoppedPlaying.reset();
  if (entry.state == PlayerState::Playing && state == PlayerState::Stopped) {
    entry.stoppedPlaying = std::chrono::steady_clock::now();
  }
  entry.state = state;
  entry.lastChange = ++changes_;
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

/// Some players say that they are stopped for a moment while they go to the next track. A player
/// that is only paused must not take over the panel and its buttons meanwhile.
bool PlayerRoster::isBetweenTracks(const Entry& entry) const {
  return entry.stoppedPlaying && !entry.silent &&
         std::chrono::steady_clock::now() - *entry.stoppedPlaying < betweenTracks_;
}

const PlayerRoster::Entries::value_type* PlayerRoster::choose() const {
  const auto* const current = findCurrent();
  const bool keeps = current != nullptr && !current->second.silent &&
                     current->second.state == PlayerState::Playing;
  if (keeps) return current;
  const Entries::value_type* best = nullptr;
  const auto standing = [](const Entry& entry) { return std::pair(rank(entry), entry.lastChange); };
  for (const auto& each : entries_) {
    if (!counts(each.second)) continue;
    if (best == nullptr || standing(best->second) < standing(each.second)) best = &each;
  }
  const bool onlyPauses = current != nullptr && isBetweenTracks(current->second) &&
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
