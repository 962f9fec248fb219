#include "host/panel/ControlRefusal.h"

#include <array>
#include <string_view>

namespace Corvella {

namespace {

struct Rule {
  std::string_view identifier;
  bool (*isPossible)(const PlayerDescription& player);
  const char* refusal;  ///< %1 stands for the player.
};

bool obeysPlayButton(const PlayerDescription& player) {
  return player.playing ? player.canPause : player.canPlay;
}

constexpr std::array kRules{
    Rule{"previousButton", [](const auto& player) { return player.canControl; },
         "%1 takes no commands"},
    Rule{"playButton", [](const auto& player) { return player.canControl; },
         "%1 takes no commands"},
    Rule{"nextButton", [](const auto& player) { return player.canControl; },
         "%1 takes no commands"},
    Rule{"previousButton", [](const auto& player) { return player.canGoPrevious; },
         "%1 has no track before this one"},
    Rule{"nextButton", [](const auto& player) { return player.canGoNext; },
         "%1 has no track after this one"},
    Rule{"playButton", obeysPlayButton, "%1 cannot do that just now"},
    Rule{"songRatingIndicator", [](const auto& player) { return player.keepsRating; },
         "%1 keeps no ratings"},
    Rule{"soundVolume", [](const auto& player) { return player.keepsVolume; },
         "%1 lets nobody set its volume"}};

bool isControl(std::string_view identifier) {
  for (const auto& rule : kRules) {
    if (rule.identifier == identifier) return true;
  }
  return identifier == "toggleLyricsButton";
}

}  // namespace

QString controlRefusal(const std::string& identifier, const PlayerDescription& player) {
  if (!isControl(identifier)) return {};
  if (!player.exists()) return "No player is running";
  for (const auto& rule : kRules) {
    if (rule.identifier != identifier || rule.isPossible(player)) continue;
    return QString(rule.refusal).arg(QString::fromStdString(player.identity));
  }
  return {};
}

}  // namespace Corvella
