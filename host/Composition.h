#pragma once

#include <string>

#include "host/Application.h"
#include "host/AwaitedScriptRunner.h"
#include "host/FontPreload.h"
#include "host/ProgramServices.h"
#include "host/TodayView.h"
#include "host/WidgetBridge.h"

namespace Corvella {

/// Qt's application, the Today view, and the player behind it, put together. GUI thread.
class Composition {
 public:
  /// Reaches for the player that `--player` names while Qt reaches for the display server.
  explicit Composition(const std::string& player);

  WidgetBridge& bridge() { return bridge_; }
  TodayView& view() { return view_; }

 private:
  const ProgramServices services_;
  WidgetBridge bridge_;
  AwaitedScriptRunner runner_;
  FontPreload fonts_;
  Application application_;
  TodayView view_;
};

}  // namespace Corvella
