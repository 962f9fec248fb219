#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "extension/ExtensionThread.h"
#include "extension/WidgetHost.h"
#include "players/PlayerDescription.h"
#include "players/PlayerNews.h"
#include "scripting/ScriptRunner.h"

namespace Corvella {

/// The widget at work on one player, from its start to its end. Used on the GUI thread. The
/// destructor waits for a script that is running, and may be called on any thread.
class WidgetSession {
 public:
  virtual ~WidgetSession() = default;

  virtual ExtensionThread& extension() = 0;
  /// Runs scripts on the widget's player, for what is to be known beside the widget. Any thread.
  virtual ScriptRunner& scripts() = 0;

  /// Why no player, or not the one that the user named, can be shown just now; empty when nothing
  /// is wrong. May wait for answers for some hundred milliseconds.
  virtual std::string whyPlayerIsNotShown() const { return {}; }
  /// The player that the widget's scripts ask; see `MusicPlayer::description`.
  virtual PlayerDescription player() const = 0;
  /// All players that there are.
  virtual std::vector<PlayerDescription> players() const = 0;
  virtual void raisePlayer() = 0;
};

/// Starts the widget on the player that `--player` names. `host`, which is told what the widget
/// does, and `listener`, which is told the news of the player, outlive the session. Throws
/// `std::runtime_error` with the reason when there can be none.
using StartWidget = std::function<std::unique_ptr<WidgetSession>(
    const std::string& player, WidgetHost& host, PlayerNewsListener& listener)>;

}  // namespace Corvella
