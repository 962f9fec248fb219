#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "controls/LyricsTextView.h"
#include "controls/SongRatingLevelIndicatorCell.h"
#include "model/SongController.h"
#include "model/SongInfo.h"
#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSViewController.h"
#include "platform/foundation/NSCoder.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/NSTimer.h"
#include "platform/notification_center/NCWidgetProviding.h"
#include "widget/TodayViewServices.h"

namespace Corvella {

/// The widget: shows the current track, keeps the play position moving and passes the user's
/// commands to the player.
///
/// Owned by the host through a `std::shared_ptr`; every block that it enqueues and the progress
/// timer hold it, too. Every operation lives on the main queue. An outlet that is absent skips the
/// step that needs it. Nothing is reported but through the controls and the host's callback.
///
/// The class lives in six source files, one for each subject:
/// - TodayViewController.cpp: how it is made, its outlets and actions, and how the timer is
/// stopped;
/// - Appearance.cpp: what the host calls when the widget is shown, hidden or asked for an update;
/// - DisplayRefresh.cpp: how the current track is fetched and shown, and how the timer is started;
/// - ProgressTick.cpp: what happens at each tick of the timer;
/// - PlaybackControls.cpp: the buttons for playing and changing the track, the rating, the volume;
/// - LyricsPanel.cpp: how the lyrics unfold and fold, and the height that the widget prefers.
class TodayViewController final : public NSViewController, public NCWidgetProviding {
 public:
  using Services = TodayViewServices;

  /// Runs no script and reads no resource; nor do the other initialisers. The initial state is the
  /// same for all three. The view comes from the interface file of `nibName()` whatever name is
  /// given.
  TodayViewController(const Services& services, std::optional<std::string> nibName,
                      std::shared_ptr<const NSBundle> bundle);
  TodayViewController(const Services& services, const NSCoder& coder);
  explicit TodayViewController(const Services& services);

  // The outlets, by their names in the interface file. All but the lyrics view are held weakly.
  std::shared_ptr<NSImageView> albumArtView() const { return albumArtView_.lock(); }
  std::shared_ptr<NSTextField> songTitle() const { return songTitle_.lock(); }
  std::shared_ptr<NSTextField> songArtistAndAlbum() const { return songArtistAndAlbum_.lock(); }
  std::shared_ptr<NSLevelIndicator> songRatingIndicator() const {
    return songRatingIndicator_.lock();
  }
  std::shared_ptr<SongRatingLevelIndicatorCell> songRatingCell() const {
    return songRatingCell_.lock();
  }
  std::shared_ptr<NSButton> playButton() const { return playButton_.lock(); }
  std::shared_ptr<NSSlider> soundVolume() const { return soundVolume_.lock(); }
  std::shared_ptr<NSProgressIndicator> progressBar() const { return progressBar_.lock(); }
  std::shared_ptr<NSButton> toggleLyricsButton() const { return toggleLyricsButton_.lock(); }
  std::shared_ptr<LyricsTextView> lyricsView() const { return lyricsView_; }

  void setAlbumArtView(std::weak_ptr<NSImageView> view) { albumArtView_ = std::move(view); }
  void setSongTitle(std::weak_ptr<NSTextField> field) { songTitle_ = std::move(field); }
  void setSongArtistAndAlbum(std::weak_ptr<NSTextField> field) {
    songArtistAndAlbum_ = std::move(field);
  }
  void setSongRatingIndicator(std::weak_ptr<NSLevelIndicator> indicator) {
    songRatingIndicator_ = std::move(indicator);
  }
  void setSongRatingCell(std::weak_ptr<SongRatingLevelIndicatorCell> cell) {
    songRatingCell_ = std::move(cell);
  }
  void setPlayButton(std::weak_ptr<NSButton> button) { playButton_ = std::move(button); }
  void setSoundVolume(std::weak_ptr<NSSlider> slider) { soundVolume_ = std::move(slider); }
  void setProgressBar(std::weak_ptr<NSProgressIndicator> bar) { progressBar_ = std::move(bar); }
  void setToggleLyricsButton(std::weak_ptr<NSButton> button) {
    toggleLyricsButton_ = std::move(button);
  }
  void setLyricsView(std::shared_ptr<LyricsTextView> view) { lyricsView_ = std::move(view); }

  /// Folds the lyrics panel. Called by the interface-file loader.
  void awakeFromNib() override;

  /// Shows the placeholders, then, when the player runs, starts a refresh, and tells the host's
  /// callback. Blocks for one or two scripts.
  void viewWillAppear() override;

  /// Stops the progress timer, a little later.
  void viewWillDisappear() override;

  /// Fetches the current track in the background and shows it later; starts the progress timer when
  /// the player plays by then, unless the widget was hidden meanwhile. Refreshes are not
  /// serialised.
  void updateSongInfo();

  /// One tick of the progress timer: moves the bar, and starts a refresh when the title on screen
  /// is no longer the player's. Blocks for three scripts.
  void updateProgress(NSTimer* timer);

  /// Unfolds or folds the lyrics. Reads and writes the title of the sender, and holds it until the
  /// lyrics have arrived; a sender that no `std::shared_ptr` holds keeps its title then.
  void seeMoreClicked(NSButton& sender);
  void previousButtonClicked(NSButton& sender);
  void playButtonClicked(NSButton& sender);
  void nextButtonClicked(NSButton& sender);
  /// Sends the sender's stars to the player, in the player's points; the product stays within 64
  /// bits.
  void updateRating(NSLevelIndicator& sender);
  /// Sends the sender's value to the player.
  void updateSoundVolume(NSSlider& sender);

  /// Always "TodayViewController".
  std::string nibName() const override;

  /// Keeps the callback until another one comes, and calls it at once.
  void widgetPerformUpdateWithCompletionHandler(CompletionHandler completionHandler) override;

  bool connectOutlet(std::string_view name, const std::shared_ptr<NSObject>& object) override;
  bool connectAction(std::string_view selector, NSControl& control) override;

 private:
  friend struct TodayViewControllerInspector;  // Tests look at the state through it.

  void resizeToHeight(double height);
  double unfoldedHeight(double baseHeight) const;
  void showSong(const SongInfo& song, const std::shared_ptr<const NSImage>& artwork);
  void showLyricsToggle(const std::string& lyrics) const;
  void showLyricsPanel(const std::string& lyrics);
  void showRating(std::int32_t ratings);
  void startTimerWhilePlaying(std::uint64_t disappearancesAtStart);
  void showArrivedLyrics(const std::string& lyrics, NSButton* sender, double baseHeight);
  void changeTrack(PlaybackRequest request);
  void showPlayButtonForState();
  void setPlayButtonTitle(const std::string& title) const;
  void stopTimerLater();
  void stopTimer();
  void report(NCUpdateResult result);
  std::shared_ptr<TodayViewController> strongSelf();
  template <typename Sender>
  bool connect(NSControl& control, void (TodayViewController::*method)(Sender&));

  std::weak_ptr<NSImageView> albumArtView_;
  std::weak_ptr<NSTextField> songTitle_;
  std::weak_ptr<NSTextField> songArtistAndAlbum_;
  std::weak_ptr<NSLevelIndicator> songRatingIndicator_;
  std::weak_ptr<SongRatingLevelIndicatorCell> songRatingCell_;
  std::weak_ptr<NSButton> playButton_;
  std::weak_ptr<NSSlider> soundVolume_;
  std::weak_ptr<NSProgressIndicator> progressBar_;
  std::weak_ptr<NSButton> toggleLyricsButton_;
  std::shared_ptr<LyricsTextView> lyricsView_;
  const std::int64_t RATING_SCALE = 20;  ///< The player's points per star.
  const double INITIAL_HEIGHT = 285.0;   ///< Points, with the lyrics folded.
  const std::string pauseLabel = "❚❚";
  const std::string playLabel = "▶";
  const std::unique_ptr<SongController> songController;
  bool expanded = false;
  NSNumber songRating = NSNumber::initWithInt(0);  ///< Stars.
  CompletionHandler completionHandler;
  std::shared_ptr<NSTimer> timer;

  const Services services_;
  std::uint64_t disappearances_ = 0;  ///< How often the widget has been hidden.
};

}  // namespace Corvella
