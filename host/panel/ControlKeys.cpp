#include "host/panel/ControlKeys.h"

#include <Qt>

namespace Corvella {

std::span<const ControlKeys> controlKeys() {
  static constexpr std::array kKeys{
      ControlKeys{"playButton", "Space", {Qt::Key_Space}},
      ControlKeys{"previousButton", "P", {Qt::Key_P}},
      ControlKeys{"nextButton", "N", {Qt::Key_N}},
      ControlKeys{"toggleLyricsButton", "L", {Qt::Key_L}},
      ControlKeys{"soundVolume", "Up, Down", {Qt::Key_Up, Qt::Key_Down}},
      ControlKeys{"songRatingIndicator",
                  "0 to 5",
                  {Qt::Key_0, Qt::Key_1, Qt::Key_2, Qt::Key_3, Qt::Key_4, Qt::Key_5}}};
  return kKeys;
}

const char* keyNames(std::string_view control) {
  for (const auto& each : controlKeys()) {
    if (each.control == control) return each.names;
  }
  return "";
}

}  // namespace Corvella
