#include "platform/foundation/NSString.h"
#include "widget/TodayViewController.h"

namespace Corvella {

void TodayViewController::updateProgress(NSTimer* /*timer*/) {
  services_.mainQueue.assertCurrent();
  if (const auto position = songController->playerPosition()) {
    const double seconds = NSString::doubleValue(*position);
    if (const auto bar = progressBar()) bar->setDoubleValue(seconds);
  }

  const auto field = songTitle();
  const auto shownTitle = field ? std::optional(field->stringValue()) : std::nullopt;
  const auto song = songController->songInfo();
  if (!shownTitle || !NSString::isEqualToString(*shownTitle, song.title)) updateSongInfo();
}

}  // namespace Corvella
