#include "host/panel/ControlRefusal.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace Corvella {

namespace {

struct Rule {
  std::vector<std::string_view> controls;
  bool (*isPossible)(const PlayerDescription& player);
  const char* refusal;  ///< %1 stands for the player.
};

bool obeysPlayButton(const PlayerDescription& player) {
  return player.playing ? player.canPause : player.canPlay;
}

/// The first rule that forbids a control gives the reason. The lyrics are not forbidden to one who
/// wants to fold them while the player does not answer.
const std::vector<Rule>& rules() {
  constexpr auto kPrevious = "previousButton";
  constexpr auto kPlay = "playButton";
  constexpr auto kNext = "nextButton";
  constexpr auto kRating = "songRatingIndicator";
  constexpr auto kVolume = "soundVolume";
  constexpr auto kLyrics = "toggleLyricsButton";
  static const std::vector<Rule> all{
      {{kPrevious, kPlay, kNext, kRating, kVolume, kLyrics},
       [](const auto& player) { return player.exists() || !player.identity.empty(); },
       "No player is running"},
      {{kPrevious, kPlay, kNext, kRating, kVolume, kLyrics},
       [](const auto& player) { return player.exists(); },
       "%1 is not running"},
      {{kPrevious, kPlay, kNext, kRating, kVolume},
       [](const auto& player) { return !player.silent; },
       "%1 does not answer"},
      {{kPrevious, kPlay, kNext},
       [](const auto& player) { return player.canControl; },
       "%1 takes no commands"},
      {{kPrevious},
       [](const auto& player) { return player.canGoPrevious; },
       "%1 has no track before this one"},
      {{kNext},
       [](const auto& player) { return player.canGoNext; },
       "%1 has no track after this one"},
      {{kPlay}, obeysPlayButton, "%1 cannot do that just now"},
      {{kRating}, [](const auto& player) { return player.keepsRating; }, "%1 keeps no ratings"},
      {{kVolume},
       [](const auto& player) { return player.keepsVolume; },
       "%1 lets nobody set its volume"}};
  return all;
}

}  // namespace

QString controlRefusal(const std::string& identifier, const PlayerDescription& player) {
  for (const auto& [controls, isPossible, refusal] : rules()) {
    if (std::ranges::find(controls, identifier) == controls.end() || isPossible(player)) continue;
    const QString text(refusal);
    return text.contains("%1") ? text.arg(QString::fromStdString(player.identity)) : text;
  }
  return {};
}

}  // namespace Corvella
