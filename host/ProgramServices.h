#pragma once

#include <memory>
#include <string>

#include "host/ExtensionThread.h"
#include "host/FontconfigFinder.h"
#include "host/QtImageDecoder.h"
#include "host/QtTextMeasurer.h"
#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSBundle.h"
#include "scripting/ScriptRunner.h"

namespace Corvella {

/// Everything that the program brings to the widget, put together. Text is measured once there is a
/// `QGuiApplication`; all else needs none.
class ProgramServices {
 public:
  ProgramServices();

  /// Reaches for the player that `--player` names and makes the script runner that asks it. Any
  /// thread; may take a while. Throws `std::runtime_error` as `selectPlayer` does, or when the
  /// entitlements cannot be read.
  std::unique_ptr<ScriptRunner> makeScriptRunner(const std::string& player) const;

  /// With that runner, which outlives what they are used for, as these services do.
  HostServices with(ScriptRunner& runner) const;

 private:
  SteadyClock clock_;
  QtImageDecoder imageDecoder_;
  FontconfigFinder fontFinder_;
  QtTextMeasurer textMeasurer_;
  NSBundle bundle_;
};

}  // namespace Corvella
