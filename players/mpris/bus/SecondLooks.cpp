#include "players/mpris/bus/SecondLooks.h"

#include <algorithm>

#include "players/mpris/bus/MprisNames.h"
#include "players/mpris/track/TrackMetadata.h"

namespace Corvella {

void SecondLooks::compareAnswers(const std::string& owner, const PropertyMap& told) {
  if (!observer_.isFollowed(owner)) return;
  // The player answers a question that is under way after it sent this signal.
  if (!told_.contains(owner)) {
    calls_.getAll(owner, MprisNames::kPlayerInterface, microseconds(deadlines_.call),
                  [this, owner](sd_bus_message* reply) {
                    const auto entry = told_.extract(owner);
                    if (!isError(reply)) answersCame(owner, entry.mapped(), listedIn(reply));
                  });
  }
  auto& latest = told_[owner];
  for (const auto* const name : {"PlaybackStatus", "Metadata", "Volume", "Rating"}) {
    if (const auto* const value = told.find(name)) latest[name] = *value;
  }
}

void SecondLooks::answersCame(const std::string& owner, const Told& told,
                              const PropertyMap& answered) {
  // Some players do not tell when they come to be able to do something.
  observer_.propertiesListed(owner, answered);
  // It may be on its way to another track, or leave the panel to another player.
  const auto status = told.find("PlaybackStatus");
  const bool mayGoOn = status != told.end() && textOf(&status->second) == "Stopped";
  for (const auto& [name, value] : told) {
    const auto* const answer = answered.find(name);
    if (answer == nullptr || (value == *answer && !mayGoOn)) continue;
    return lookLater(owner);
  }
}

void SecondLooks::lookLater(const std::string& owner) {
  waiting_[owner] = std::chrono::steady_clock::now() + kUntilAnswersAgree;
}

std::vector<std::string> SecondLooks::takeDue() {
  std::vector<std::string> due;
  const auto now = std::chrono::steady_clock::now();
  std::erase_if(waiting_, [&](const auto& waiting) {
    if (waiting.second > now) return false;
    due.push_back(waiting.first);
    return true;
  });
  return due;
}

std::optional<std::chrono::steady_clock::time_point> SecondLooks::nextDue() const {
  const auto next =
      std::ranges::min_element(waiting_, {}, [](const auto& waiting) { return waiting.second; });
  return next != waiting_.end() ? std::optional(next->second) : std::nullopt;
}

}  // namespace Corvella
