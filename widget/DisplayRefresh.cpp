#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "platform/foundation/NSString.h"
#include "widget/TodayViewController.h"

namespace Corvella {

namespace {

bool areMissing(const std::string& lyrics) {
  constexpr std::array<std::string_view, 3> words{"instrumental", "(instrumental)",
                                                  "[instrumental]"};
  if (lyrics.empty()) return true;
  const auto lowered = NSString::lowercaseString(lyrics);
  return std::any_of(words.begin(), words.end(), [&lowered](std::string_view word) {
    return NSString::isEqualToString(lowered, word);
  });
}

}  // namespace

void TodayViewController::updateSongInfo() {
  services_.mainQueue.assertCurrent();
  dispatch_async(services_.globalQueue,
                 [self = strongSelf(), disappearances = disappearances_]() mutable {
                   auto song = self->songController->songInfo();
                   auto artwork = self->songController->songArtwork();
                   auto& mainQueue = self->services_.mainQueue;
                   // Moved and not copied: the last reference would otherwise be dropped here, and
                   // the controller would be destroyed on the global queue.
                   dispatch_async(mainQueue, [self = std::move(self), song = std::move(song),
                                              artwork = std::move(artwork), disappearances] {
                     self->showSong(song, artwork);
                     self->startTimerWhilePlaying(disappearances);
                   });
                 });
}

void TodayViewController::showSong(const SongInfo& song,
                                   const std::shared_ptr<const NSImage>& artwork) {
  services_.mainQueue.assertCurrent();
  showLyricsToggle(song.lyrics);
  if (const auto field = songTitle()) field->setStringValue(song.title);
  if (const auto field = songArtistAndAlbum()) {
    field->setStringValue(song.artist + " - " + song.album);
  }
  if (const auto view = albumArtView()) view->setImage(artwork);
  showLyricsPanel(song.lyrics);
  if (const auto cell = songRatingCell()) cell->setHighlighted(true);
  showRating(song.ratings);
  if (const auto slider = soundVolume()) slider->setIntegerValue(song.volume);
  const auto bar = progressBar();
  if (bar && song.finish) bar->setMaxValue(NSString::doubleValue(*song.finish));
}

void TodayViewController::showLyricsToggle(const std::string& lyrics) const {
  const auto button = toggleLyricsButton();
  if (!button) return;
  if (areMissing(lyrics)) {
    button->setTitle("No Lyrics");
  } else {
    button->setTitle(expanded ? "Hide Lyrics" : "Show Lyrics");
  }
}

void TodayViewController::showLyricsPanel(const std::string& lyrics) {
  if (lyricsView_) lyricsView_->setString(expanded ? lyrics : "");
  resizeToHeight(expanded ? unfoldedHeight(INITIAL_HEIGHT) : INITIAL_HEIGHT);
}

void TodayViewController::showRating(std::int32_t ratings) {
  songRating = NSNumber::initWithInt(static_cast<std::int32_t>(ratings / RATING_SCALE));
  if (const auto indicator = songRatingIndicator()) {
    indicator->setIntegerValue(songRating.integerValue());
  }
}

/// A refresh that began before the widget was hidden must not start a timer that nobody would stop.
/// A refresh that begins while the widget is hidden was asked for on purpose,
/// and starts the timer as usual.
void TodayViewController::startTimerWhilePlaying(std::uint64_t disappearancesAtStart) {
  const auto state = songController->playerState();
  if (!state || !NSString::isEqualToString(*state, "playing")) return;
  if (disappearances_ != disappearancesAtStart) return;
  if (timer) timer->invalidate();
  timer = NSTimer::scheduledTimerWithTimeInterval(
      services_.mainRunLoop, std::chrono::seconds(1),
      [self = strongSelf()](NSTimer& tick) { self->updateProgress(&tick); }, true);
}

}  // namespace Corvella
