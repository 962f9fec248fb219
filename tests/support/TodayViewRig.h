#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/LyricsText.h"
#include "host/TodayView.h"
#include "players/embedded/EmbeddedPlayer.h"
#include "tests/support/HostParts.h"
#include "tests/support/ScriptGate.h"
#include "tests/support/ScriptedStack.h"

namespace Corvella {

/// A Today view over the embedded player, whose scripts can be held up.
class TodayViewRig {
 public:
  explicit TodayViewRig(std::vector<EmbeddedTrack> tracks = embeddedTracks());

  /// Opens the view and waits for a track.
  void open();
  /// Unfolds the lyrics and waits for them; null when they do not come.
  LyricsText* unfold();
  void press(Qt::Key key);

  /// The text that the label of that name shows in full.
  std::string text(const char* label) const;
  /// The widget of that name; null when there is none of that class.
  template <typename Widget = QWidget>
  Widget* find(const char* name) const {
    return window.findChild<Widget*>(name);
  }

  /// Lets the application run until the condition holds; false when it never does.
  static bool waitFor(const std::function<bool()>& condition);

 private:
  HostParts parts_;

 public:
  EmbeddedPlayer player;

 private:
  PlayerScriptRunner runner_{player, shippedTargets()};

 public:
  ScriptGate gate{runner_};
  WidgetBridge bridge;
  TodayView view{parts_.services(gate), bridge, "mpv"};
  TodayWindow& window = view.window();
};

}  // namespace Corvella
