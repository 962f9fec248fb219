#include <utility>

#include "platform/foundation/NSString.h"
#include "widget/TodayViewController.h"

namespace Corvella {

void TodayViewController::seeMoreClicked(NSButton& sender) {
  services_.mainQueue.assertCurrent();
  if (NSString::isEqualToString(sender.title(), "No Lyrics")) return;
  if (expanded) {
    if (lyricsView_) lyricsView_->setString("");
    resizeToHeight(INITIAL_HEIGHT);
    sender.setTitle("Show Lyrics");
  } else {
    auto button = std::static_pointer_cast<NSButton>(sender.weak_from_this().lock());
    dispatch_async(services_.globalQueue, [self = strongSelf(), button = std::move(button),
                                           baseHeight = INITIAL_HEIGHT]() mutable {
      auto lyrics = self->songController->songLyrics();
      auto& mainQueue = self->services_.mainQueue;
      // Moved and not copied: the last references would otherwise be dropped here, and the
      // controller or the button would be destroyed on the global queue.
      dispatch_async(mainQueue, [self = std::move(self), button = std::move(button), baseHeight,
                                 lyrics = std::move(lyrics)] {
        self->showArrivedLyrics(lyrics, button.get(), baseHeight);
      });
    });
  }
  expanded = !expanded;
}

/// Does not look at `expanded`: the user may have folded the panel in the meantime.
void TodayViewController::showArrivedLyrics(const std::string& lyrics, NSButton* sender,
                                            double baseHeight) {
  services_.mainQueue.assertCurrent();
  if (lyricsView_) lyricsView_->setString(lyrics);
  if (sender != nullptr) sender->setTitle("Hide Lyrics");
  resizeToHeight(unfoldedHeight(baseHeight));
}

/// The base height alone where there is no lyrics view or no text height.
double TodayViewController::unfoldedHeight(double baseHeight) const {
  const auto textHeight = lyricsView_ ? lyricsView_->textHeight() : std::nullopt;
  return baseHeight + textHeight.value_or(0);
}

void TodayViewController::resizeToHeight(double height) {
  const double width = view()->bounds().size.width;
  setPreferredContentSize({.width = width, .height = height});
}

}  // namespace Corvella
