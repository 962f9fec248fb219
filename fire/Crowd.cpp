#include "fire/Crowd.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <system_error>
#include <utility>

#include "fire/Channel.h"

namespace Corvella {

using namespace std::chrono_literals;

namespace {

constexpr int kPlayers = 8;

}  // namespace

Crowd::Crowd(std::string address, std::uint64_t seed, HostilePlaces places)
    : address_(std::move(address)), places_(std::move(places)), dice_(seed) {
  for (int i = 0; i < kPlayers; ++i) {
    players_.emplace_back(address_, i);
    players_.back().become(newTruth(), 0);
  }
  rest();
}

Truth Crowd::newTruth() {
  constexpr std::array kStates{"Playing", "Paused", "Stopped"};
  constexpr std::array kTitles{"Track ", "قمر ", "\U0001f389 ",
                               "A Title That Is Too Long for Any Panel, "
                               "However Wide It Is, and Goes on and on and on, Number "};
  return {.title = dice_.of(kTitles) + std::to_string(++tracks_),
          .artist = "Artist " + std::to_string(dice_.below(100)),
          .status = dice_.of(kStates),
          .volume = dice_.between(0, 100),
          .stars = dice_.between(0, 5)};
}

void Crowd::log(const std::string& kind, const std::string& what) const {
  const std::chrono::duration<double> time = Clock::now() - start_;
  std::printf("%.3f %s: %s\n", time.count(), kind.c_str(), what.substr(0, 300).c_str());
  std::fflush(stdout);
}

void Crowd::rest() {
  resting_ = true;
  constexpr std::size_t kFew = 6;
  const auto absent = dice_.below(kFew * players_.size());
  for (std::size_t i = 0; i < players_.size(); ++i) {
    auto& player = players_[i];
    player.rest();
    for (const auto& other : players_) {
      if (&other != &player) player.giveBackName(other.name());
    }
    if (i == absent) {
      player.leave();
    } else if (!player.isThere()) {
      come(player);
    } else {
      player.takeName(player.name());
    }
    player.become(newTruth(), dice_.between(0, 100));
  }
  log("rests", "all");
}

void Crowd::comeBack() {
  strangers_.reset();
  for (auto& player : players_) player.leave();
  rest();
}

void Crowd::come(MadePlayer& player) {
  try {
    player.come();
  } catch (const std::system_error& error) {
    player.leave();
    log("fails", player.name() + " to come: " + error.what());
  }
}

std::string Crowd::state() const {
  Fields fields;
  std::uint64_t unsent = 0;
  for (const auto& player : players_) {
    if (!player.isThere()) continue;
    unsent += player.unsent();
    const auto& truth = player.truth();
    const auto set = [&](const char* what, const std::string& value) {
      fields[player.name() + " " + what] = value;
    };
    set("identity", player.identity());
    set("title", truth.title);
    set("artist", truth.artist);
    set("status", truth.status);
    set("volume", std::to_string(truth.volume));
    set("stars", std::to_string(truth.stars));
    set("position", std::to_string(player.position()));
  }
  fields["unsent"] = std::to_string(unsent);
  return written(fields);
}

void Crowd::turn() {
  for (auto& player : players_) player.turn();
  if (strangers_) strangers_->turn();
  const auto now = Clock::now();
  if (resting_ || now < next_) return;
  // Often much happens at once.
  const int count = dice_.once(4) ? dice_.between(2, 8) : 1;
  for (int i = 0; i < count; ++i) act();
  // Now and then there is time for the panel to look at what it was told.
  next_ = now + std::chrono::milliseconds(dice_.between(1, dice_.once(5) ? 1'500 : 200));
}

void Crowd::act() {
  if (dice_.once(12)) return bother();
  if (dice_.once(15)) return swapNames();
  auto& player = anyPlayer();
  if (player.isThere()) return actOf(player);
  log("comes", player.name());
  come(player);
}

MadePlayer& Crowd::anyPlayer() {
  const auto shown = std::ranges::find(players_, shown_, &MadePlayer::identity);
  if (shown != players_.end() && !dice_.once(3)) return *shown;
  return players_[dice_.below(players_.size())];
}

void Crowd::actOf(MadePlayer& player) {
  const auto& name = player.name();
  const auto pretend = [&](const HostileValues& hostile) {
    log("pretends", name + " " + hostile.what);
    player.pretend(hostile.values, !dice_.once(4));
  };
  switch (dice_.below(16)) {
    case 0:
      log("hangs", name);
      return player.hang();
    case 1: {
      const std::chrono::milliseconds late(dice_.between(50, 2'000));
      log("is-late", name + " by " + std::to_string(late.count()) + " ms");
      return player.answerLate(late);
    }
    case 2:
      log("vanishes", name + " at its next call");
      return player.vanishAtNextCall();
    case 3: {
      constexpr std::array kFloods{MadePlayer::Flood::Values, MadePlayer::Flood::Invalidated,
                                   MadePlayer::Flood::Seeks};
      constexpr std::array kNames{"values", "invalidations", "seeks"};
      const auto which = dice_.below(kFloods.size());
      log("floods", name + " with " + kNames[which]);
      return player.flood(kFloods[which], std::chrono::milliseconds(dice_.between(200, 2'000)));
    }
    case 4:
      if (const auto now = Clock::now(); now >= nextHuge_) {
        nextHuge_ = now + 6s;
        return pretend(hugeMetadata());
      }
      [[fallthrough]];
    case 5:
    case 6:
      return pretend(hostileValues(dice_));
    case 7:
    case 8:
      return pretend(hostilePlaces(dice_, places_));
    case 9:
      log("leaves", name);
      return player.leave();
    case 10:
    case 11:
    case 12:
      log("recovers", name);
      return player.rest();
    default:
      return change(player);
  }
}

void Crowd::change(MadePlayer& player) {
  log("changes", player.name());
  player.become(newTruth(), dice_.between(0, 100));
}

void Crowd::swapNames() {
  auto& one = players_[dice_.below(players_.size())];
  auto& other = players_[dice_.below(players_.size())];
  log("swaps", one.name() + " and " + other.name() + " their names");
  one.giveBackName(one.name());
  other.giveBackName(other.name());
  if (dice_.once(3)) return;  // They are players without a name.
  one.takeName(other.name());
  other.takeName(one.name());
}

void Crowd::bother() {
  try {
    if (!strangers_) strangers_.emplace(address_);
    std::set<std::string> spared;
    for (const auto& player : players_) spared.insert(player.uniqueName());
    log("strangers", strangers_->bother(dice_, spared));
  } catch (const std::system_error& error) {
    strangers_.reset();
    log("fails", std::string("a stranger: ") + error.what());
  }
}

}  // namespace Corvella
