#pragma once

#include <memory>
#include <string>

#include "host/panel/WidgetSession.h"
#include "host/services/FontconfigFinder.h"
#include "host/services/QtImageDecoder.h"
#include "host/services/QtTextMeasurer.h"
#include "model/SongController.h"
#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSBundle.h"
#include "players/mpris/bus/MprisBus.h"

namespace Corvella {

/// The one place where the program is put together: the platform's services as the host brings
/// them, a player, the interpreter that asks it, and the widget on its thread.
///
/// Text is measured once there is a `QGuiApplication`; all else needs none. GUI thread.
class Composition {
 public:
  /// `deadlines` are those of players on the session bus.
  explicit Composition(const MprisDeadlines& deadlines = {});

  /// See `StartWidget`. This object outlives the session.
  std::unique_ptr<WidgetSession> startWidget(const std::string& player, WidgetHost& host,
                                             PlayerNewsListener& listener) const;

  /// A song model beside the widget's own, on the same player. The session outlives it.
  SongController songOf(WidgetSession& session) const {
    return {session.scripts(), bundle_, imageDecoder_};
  }

  /// `startWidget` as a function to hand on.
  StartWidget starter() const {
    return [this](const std::string& player, WidgetHost& host, PlayerNewsListener& listener) {
      return startWidget(player, host, listener);
    };
  }

 private:
  /// Invented tracks must not take the place of a player whose bus has gone.
  mutable bool isFirstPlayer_ = true;
  const MprisDeadlines deadlines_;
  SteadyClock clock_;
  QtImageDecoder imageDecoder_;
  FontconfigFinder fontFinder_;
  QtTextMeasurer textMeasurer_;
  NSBundle bundle_;
};

}  // namespace Corvella
