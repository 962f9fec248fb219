#include "platform/appkit/NSColor.h"
#include "platform/appkit/NSFont.h"
#include "widget/TodayViewController.h"

namespace Corvella {

void TodayViewController::viewWillAppear() {
  services_.mainQueue.assertCurrent();
  if (const auto field = songTitle()) field->setStringValue("No Song Playing");
  if (const auto field = songArtistAndAlbum()) field->setStringValue("N/A - N/A");
  const auto placeholder =
      NSImage::imageNamed("empty_artwork.png", services_.bundle, services_.imageDecoder);
  if (const auto artView = albumArtView()) artView->setImage(placeholder);
  if (const auto cell = songRatingCell()) cell->setHighlighted(true);
  if (lyricsView_) {
    lyricsView_->setTextColor(NSColor::lightGrayColor());
    lyricsView_->setAlignment(NSTextAlignmentCenter);
    lyricsView_->setFont(NSFont::fontWithName("Helvetica Neue", 15.0, services_.fontFinder));
  }

  if (songController->running()) {
    updateSongInfo();
    showPlayButtonForState();
    report(NCUpdateResultNewData);
  } else {
    report(NCUpdateResultNoData);
  }
}

void TodayViewController::viewWillDisappear() {
  services_.mainQueue.assertCurrent();
  ++disappearances_;
  stopTimerLater();
}

void TodayViewController::widgetPerformUpdateWithCompletionHandler(CompletionHandler handler) {
  services_.mainQueue.assertCurrent();
  completionHandler = std::move(handler);
  report(NCUpdateResultNewData);
}

void TodayViewController::report(NCUpdateResult result) {
  // A copy, since the host may hand over another callback from within this one.
  const auto handler = completionHandler;
  if (handler) handler(result);
}

}  // namespace Corvella
