#pragma once

#include "host/ExtensionThread.h"
#include "host/FontconfigFinder.h"
#include "host/QtImageDecoder.h"
#include "host/QtTextMeasurer.h"
#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSBundle.h"

namespace Corvella {

/// What the program brings to the widget, but for the scripts. Needs a Qt application.
class HostParts {
 public:
  /// The parts have to outlive the services.
  HostServices services(ScriptRunner& scripts) { return services(scripts, bundle); }
  /// The same for a widget whose resources are those of another bundle.
  HostServices services(ScriptRunner& scripts, const NSBundle& resources) {
    return {.clock = clock,
            .scriptRunner = scripts,
            .bundle = resources,
            .imageDecoder = decoder_,
            .fontFinder = fonts_,
            .textMeasurer = measurer_};
  }

  SteadyClock clock;
  NSBundle bundle{CORVELLA_RESOURCES};

 private:
  QtImageDecoder decoder_;
  FontconfigFinder fonts_;
  QtTextMeasurer measurer_;
};

}  // namespace Corvella
