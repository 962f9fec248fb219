#include "widget/TodayViewController.h"

#include <array>
#include <cassert>
#include <utility>

namespace Corvella {

namespace {

std::unique_ptr<SongController> makeSongController(const TodayViewServices& services) {
  return std::make_unique<SongController>(services.scriptRunner, services.bundle,
                                          services.imageDecoder);
}

}  // namespace

TodayViewController::TodayViewController(const Services& services,
                                         std::optional<std::string> nibName,
                                         std::shared_ptr<const NSBundle> bundle)
    : NSViewController(services.interfaceLoader, std::move(nibName), std::move(bundle)),
      songController(makeSongController(services)),
      services_(services) {}

TodayViewController::TodayViewController(const Services& services, const NSCoder& coder)
    : NSViewController(services.interfaceLoader, coder),
      songController(makeSongController(services)),
      services_(services) {}

TodayViewController::TodayViewController(const Services& services)
    : NSViewController(services.interfaceLoader),
      songController(makeSongController(services)),
      services_(services) {}

std::string TodayViewController::nibName() const {
  return "TodayViewController";
}

void TodayViewController::awakeFromNib() {
  NSViewController::awakeFromNib();
  expanded = false;
}

NSOutletConnection TodayViewController::connectOutlet(std::string_view name,
                                                      const std::shared_ptr<NSObject>& object) {
  if (name == "albumArtView") return NSConnectOutlet(albumArtView_, object);
  if (name == "songTitle") return NSConnectOutlet(songTitle_, object);
  if (name == "songArtistAndAlbum") return NSConnectOutlet(songArtistAndAlbum_, object);
  if (name == "songRatingIndicator") return NSConnectOutlet(songRatingIndicator_, object);
  if (name == "songRatingCell") return NSConnectOutlet(songRatingCell_, object);
  if (name == "playButton") return NSConnectOutlet(playButton_, object);
  if (name == "soundVolume") return NSConnectOutlet(soundVolume_, object);
  if (name == "progressBar") return NSConnectOutlet(progressBar_, object);
  if (name == "toggleLyricsButton") return NSConnectOutlet(toggleLyricsButton_, object);
  if (name == "lyricsView") return NSConnectOutlet(lyricsView_, object);
  return NSViewController::connectOutlet(name, object);
}

NSControl::Action TodayViewController::actionNamed(std::string_view selector) {
  using Self = TodayViewController;
  if (selector == "seeMoreClicked:") return actionFor(&Self::seeMoreClicked);
  if (selector == "previousButtonClicked:") return actionFor(&Self::previousButtonClicked);
  if (selector == "playButtonClicked:") return actionFor(&Self::playButtonClicked);
  if (selector == "nextButtonClicked:") return actionFor(&Self::nextButtonClicked);
  if (selector == "updateRating:") return actionFor(&Self::updateRating);
  if (selector == "updateSoundVolume:") return actionFor(&Self::updateSoundVolume);
  return NSViewController::actionNamed(selector);
}

/// Calls the method with the control that sends the action; the control does not hold its target.
template <typename Sender>
NSControl::Action TodayViewController::actionFor(void (TodayViewController::*method)(Sender&)) {
  return [target = std::weak_ptr(strongSelf()), method](NSControl& control) {
    const auto self = target.lock();
    auto* const sender = dynamic_cast<Sender*>(&control);
    if (self && sender != nullptr) (self.get()->*method)(*sender);
  };
}

std::shared_ptr<TodayViewController> TodayViewController::strongSelf() {
  return std::static_pointer_cast<TodayViewController>(shared_from_this());
}

/// The block runs behind whatever the main queue already holds.
void TodayViewController::stopTimerLater() {
  dispatch_async(services_.mainQueue, [self = strongSelf()] { self->stopTimer(); });
}

void TodayViewController::stopTimer() {
  services_.mainQueue.assertCurrent();
  if (timer) timer->invalidate();
  timer = nullptr;
}

}  // namespace Corvella
