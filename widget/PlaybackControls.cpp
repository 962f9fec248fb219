#include <algorithm>
#include <cstdint>
#include <limits>

#include "platform/foundation/NSString.h"
#include "widget/TodayViewController.h"

namespace Corvella {

void TodayViewController::previousButtonClicked(NSButton& /*sender*/) {
  changeTrack(PlaybackRequest::Previous);
}

void TodayViewController::nextButtonClicked(NSButton& /*sender*/) {
  changeTrack(PlaybackRequest::Next);
}

void TodayViewController::changeTrack(PlaybackRequest request) {
  services_.mainQueue.assertCurrent();
  songController->playback(request);
  showPlayButtonForState();
  stopTimerLater();
  updateSongInfo();
}

void TodayViewController::playButtonClicked(NSButton& /*sender*/) {
  services_.mainQueue.assertCurrent();
  const auto state = songController->playerState();
  const bool resume = state && (NSString::isEqualToString(*state, "paused") ||
                                NSString::isEqualToString(*state, "stopped"));
  if (resume) {
    songController->playback(PlaybackRequest::Play);
    updateSongInfo();
    setPlayButtonTitle(pauseLabel);
  } else {
    songController->playback(PlaybackRequest::Pause);
    setPlayButtonTitle(playLabel);
    stopTimerLater();
  }
}

void TodayViewController::updateRating(NSLevelIndicator& sender) {
  services_.mainQueue.assertCurrent();
  const auto most = std::numeric_limits<std::int64_t>::max() / RATING_SCALE;
  songController->setSongRating(std::clamp(sender.integerValue(), -most, most) * RATING_SCALE);
  if (const auto cell = songRatingCell()) cell->setHighlighted(true);
}

void TodayViewController::updateSoundVolume(NSSlider& sender) {
  services_.mainQueue.assertCurrent();
  songController->setSoundVolume(sender.integerValue());
}

void TodayViewController::showPlayButtonForState() {
  const auto state = songController->playerState();
  const bool playing = state && NSString::isEqualToString(*state, "playing");
  setPlayButtonTitle(playing ? pauseLabel : playLabel);
}

void TodayViewController::setPlayButtonTitle(const std::string& title) const {
  if (const auto button = playButton()) button->setTitle(title);
}

}  // namespace Corvella
