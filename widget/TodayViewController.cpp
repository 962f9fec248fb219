#include "widget/TodayViewController.h"

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

bool TodayViewController::connectOutlet(std::string_view name,
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

bool TodayViewController::connectAction(std::string_view selector, NSControl& control) {
  using Self = TodayViewController;
  if (selector == "seeMoreClicked:") return connect(control, &Self::seeMoreClicked);
  if (selector == "previousButtonClicked:") return connect(control, &Self::previousButtonClicked);
  if (selector == "playButtonClicked:") return connect(control, &Self::playButtonClicked);
  if (selector == "nextButtonClicked:") return connect(control, &Self::nextButtonClicked);
  if (selector == "updateRating:") return connect(control, &Self::updateRating);
  if (selector == "updateSoundVolume:") return connect(control, &Self::updateSoundVolume);
  return NSViewController::connectAction(selector, control);
}

/// Has the control call the method with itself; the control does not hold its target.
template <typename Sender>
bool TodayViewController::connect(NSControl& control,
                                  void (TodayViewController::*method)(Sender&)) {
  if (dynamic_cast<Sender*>(&control) == nullptr) return false;
  control.setAction([target = std::weak_ptr(strongSelf()), method](NSControl& sender) {
    if (const auto self = target.lock()) (self.get()->*method)(static_cast<Sender&>(sender));
  });
  return true;
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
