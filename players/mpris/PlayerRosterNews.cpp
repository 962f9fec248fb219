// What players answer and tell, and what of it is news.

#include <algorithm>
#include <string_view>
#include <utility>

#include "players/mpris/PlayerRoster.h"
#include "players/mpris/track/TrackMetadata.h"

namespace Corvella {

namespace {

bool isListed(const std::vector<std::string>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// The news that a player has changed that is in this state now.
PlayerNews newsOf(PlayerState state) {
  return state == PlayerState::Playing ? PlayerNews::Changed : PlayerNews::Halted;
}

}  // namespace

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
void PlayerRoster::notice(const std::string& owner, std::optional<Value> KnownPlayer::*known,
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
  notice(owner, &KnownPlayer::volume, volume);
}

void PlayerRoster::noticeTrack(const std::string& owner, std::string description) {
  notice(owner, &KnownPlayer::track, std::move(description));
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

bool PlayerRoster::mayAnswerBetter(const std::string& owner) {
  constexpr int kMostAnswers = 10;
  const std::lock_guard lock(mutex_);
  auto* const found = find(owner);
  return found != nullptr && ++found->second.mistypedAnswers <= kMostAnswers;
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
  entry.mistypedAnswers = 0;
  entry.forgetAnswers();
  const auto described = entry.describe();
  if (const auto* status = changed.find("PlaybackStatus")) setState(entry, stateOf(status));
  // Properties that turned up later are learned from the next whole list.
  if (changed.contains("Volume") || changed.contains("Rating")) entry.abilities.reset();
  entry.takeAbilities(changed);
  if (isCurrent(owner)) {
    if (entry.describe() != described) tell(PlayerNews::Described);
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
  entry.takeAbilities(properties);
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
  found->second.takeIdentity(properties);
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

/// Before the first look at the players there is nobody whom the bus could surprise.
void PlayerRoster::tellOfBus() const {
  if (hasChosen_) tell(PlayerNews::Described);
}

void PlayerRoster::busFound() {
  const std::lock_guard lock(mutex_);
  if (std::exchange(bus_, Bus::Silent) == Bus::Missing) tellOfBus();
}

void PlayerRoster::busConnected() {
  const std::lock_guard lock(mutex_);
  bus_ = Bus::Answering;
  listed_ = false;
  tellOfBus();
}

void PlayerRoster::busLost() {
  const std::lock_guard lock(mutex_);
  const auto before = std::exchange(bus_, Bus::Missing);
  entries_.clear();
  listed_ = true;
  listedCondition_.notify_all();
  if (before == Bus::Answering) tell(PlayerNews::Left);
  if (before == Bus::Silent) tellOfBus();
}

bool PlayerRoster::busAnswers() const {
  const std::lock_guard lock(mutex_);
  return bus_ == Bus::Answering;
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

}  // namespace Corvella
