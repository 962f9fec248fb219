#include "host/panel/ControlKeys.h"

#include <Qt>
#include <array>
#include <string_view>

namespace Corvella {

std::span<const ControlKey> controlKeys() {
  using Act = ControlKey::Act;
  static constexpr std::array kKeys{
      ControlKey{Qt::Key_Space, "playButton", Act::Click},
      ControlKey{Qt::Key_P, "previousButton", Act::Click},
      ControlKey{Qt::Key_N, "nextButton", Act::Click},
      ControlKey{Qt::Key_L, "toggleLyricsButton", Act::Click},
      ControlKey{Qt::Key_Up, "soundVolume", Act::Raise},
      ControlKey{Qt::Key_Down, "soundVolume", Act::Lower},
      ControlKey{Qt::Key_0, "songRatingIndicator", Act::Set, 0},
      ControlKey{Qt::Key_1, "songRatingIndicator", Act::Set, 1},
      ControlKey{Qt::Key_2, "songRatingIndicator", Act::Set, 2},
      ControlKey{Qt::Key_3, "songRatingIndicator", Act::Set, 3},
      ControlKey{Qt::Key_4, "songRatingIndicator", Act::Set, 4},
      ControlKey{Qt::Key_5, "songRatingIndicator", Act::Set, 5},
  };
  return kKeys;
}

const char* keyNames(const char* identifier) {
  struct Names {
    std::string_view identifier;
    const char* names;
  };
  static constexpr std::array kNames{
      Names{"playButton", "Space"},     Names{"previousButton", "P"},
      Names{"nextButton", "N"},         Names{"toggleLyricsButton", "L"},
      Names{"soundVolume", "Up, Down"}, Names{"songRatingIndicator", "0 to 5"}};
  for (const auto& each : kNames) {
    if (each.identifier == identifier) return each.names;
  }
  return "";
}

}  // namespace Corvella
