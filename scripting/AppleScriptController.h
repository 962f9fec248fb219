#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/NSAppleEventDescriptor.h"
#include "scripting/FetchRequestType.h"
#include "scripting/PlaybackRequest.h"
#include "scripting/ScriptRunner.h"

namespace Corvella {

/// The only way to the player: composes a script text for each request and runs it.
///
/// Owned by `SongController`. Immutable; any thread, and calls may overlap. Every operation blocks
/// its caller until the script runner has returned, caches nothing and raises nothing: what failed
/// is absent. Operations reach each other through their overrides.
class AppleScriptController {
 public:
  /// `runner` must outlive the controller.
  explicit AppleScriptController(ScriptRunner& runner);
  virtual ~AppleScriptController() = default;
  AppleScriptController(const AppleScriptController&) = delete;
  AppleScriptController& operator=(const AppleScriptController&) = delete;

  /// Whether the player runs; never absent, every failure is false.
  virtual std::optional<bool> isRunning() const;

  /// The player's state in its own words, such as "playing", "paused" or "stopped"; absent when the
  /// query fails.
  virtual std::optional<std::string> playerState() const;

  /// The current track as a list: name, artist, album, lyrics, rating, finish.
  virtual std::optional<NSAppleEventDescriptor> fetchSongInfo() const;

  virtual std::optional<NSAppleEventDescriptor> fetch(FetchRequestType type) const;

  virtual void controlPlayback(PlaybackRequest request) const;

  /// Sends the rating as it is, in the player's points.
  virtual void updateRating(std::int64_t rating) const;

  /// Sends the volume as it is.
  virtual void updateVolume(std::int64_t volume) const;

 private:
  /// Runs a script. When it reports error information and the player is not stopped, that goes to
  /// standard output as one line.
  virtual std::optional<NSAppleEventDescriptor> executeScript(std::string source) const;

  std::string scriptText(std::string_view command) const;
  std::optional<std::string> textAnswer(std::string_view command) const;

  ScriptRunner& runner_;
  const std::string appName = "\"iTunes\"";
};

}  // namespace Corvella
