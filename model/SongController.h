#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "model/SongInfo.h"
#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSImageDecoder.h"
#include "platform/foundation/NSBundle.h"
#include "scripting/AppleScriptController.h"
#include "scripting/PlaybackRequest.h"
#include "scripting/ScriptRunner.h"

namespace Corvella {

/// The typed view of the player: turns raw answers into values and puts the widget's defaults in
/// place of what the player does not deliver.
///
/// Owned by the widget's controller. Any thread, and calls may overlap. Every read runs its scripts
/// afresh and blocks its caller for as long as they take.
class SongController final {
 public:
  /// The services must outlive the controller; no script runs yet.
  SongController(ScriptRunner& runner, const NSBundle& bundle, const NSImageDecoder& decoder);

  bool running() const;

  /// Seconds as text; absent when the player does not answer.
  std::optional<std::string> playerPosition() const;

  /// The player's state in its own words; absent when the player does not answer.
  std::optional<std::string> playerState() const;

  /// The current track's artwork, or "empty_artwork.png", or an empty image; never null.
  std::shared_ptr<const NSImage> songArtwork() const;

  /// The current track's lyrics; empty when there are none.
  std::string songLyrics() const;

  /// The current track, or the record that says "No Song Playing". Costs two scripts.
  SongInfo songInfo() const;

  /// In the player's points, 0..100; sent unchanged.
  void setSongRating(std::int64_t rating) const;

  /// Sent unchanged.
  void setSoundVolume(std::int64_t volume) const;

  void playback(PlaybackRequest request) const;

 private:
  std::shared_ptr<const NSImage> placeholderArtwork() const;

  const NSBundle& bundle_;
  const NSImageDecoder& decoder_;
  std::unique_ptr<AppleScriptController> scriptController;
};

}  // namespace Corvella
