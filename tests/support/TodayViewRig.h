#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/controls/LyricsView.h"
#include "host/panel/TodayView.h"
#include "players/embedded/EmbeddedPlayer.h"
#include "tests/support/HostParts.h"
#include "tests/support/ScriptGate.h"
#include "tests/support/ScriptedStack.h"

namespace Corvella {

/// A Today view over the embedded player, whose scripts can be held up. Time stands still unless
/// the test advances it.
class TodayViewRig {
 public:
  explicit TodayViewRig(std::vector<EmbeddedTrack> tracks = embeddedTracks());

  /// Opens the view and waits for a track.
  void open();
  /// Unfolds the lyrics and waits for them; null when they do not come.
  LyricsView* unfold();
  void press(Qt::Key key);
  /// Waits until the widget has dealt with all that it was told.
  void settle();

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
  std::unique_ptr<WidgetSession> start(WidgetHost& host, PlayerNewsListener& newListener);

  HostParts parts_;

 public:
  ManualClock& clock = parts_.clock;
  EmbeddedPlayer player;
  /// What the player says of itself.
  PlayerDescription description{.name = "mpv", .identity = "mpv", .canRaise = true};
  /// Who is to be told the news of the player, and how often the widget has been started.
  PlayerNewsListener* listener = nullptr;
  int starts = 0;
  int raises = 0;

 private:
  PlayerScriptRunner runner_{player, shippedTargets()};

 public:
  ScriptGate gate{runner_};
  TodayView view{[this](const std::string&, WidgetHost& host, PlayerNewsListener& news) {
                   return start(host, news);
                 },
                 "mpv"};
  TodayWindow& window = view.window();
};

}  // namespace Corvella
