#pragma once

#include "extension/ExtensionThread.h"
#include "host/services/FontconfigFinder.h"
#include "host/services/QtImageDecoder.h"
#include "host/services/QtTextMeasurer.h"
#include "platform/foundation/NSBundle.h"
#include "tests/support/ManualClock.h"

namespace Corvella {

/// What the program brings to the widget, but for the scripts and for a clock that runs. Needs a Qt
/// application.
class HostParts {
 public:
  /// The parts have to outlive the services.
  HostServices services() const { return services(bundle); }
  /// The same for a widget whose resources are those of another bundle.
  HostServices services(const NSBundle& resources) const {
    return {.clock = clock,
            .bundle = resources,
            .imageDecoder = decoder_,
            .fontFinder = fonts_,
            .textMeasurer = measurer_};
  }

  ManualClock clock;
  NSBundle bundle{CORVELLA_RESOURCES};

 private:
  QtImageDecoder decoder_;
  FontconfigFinder fonts_;
  QtTextMeasurer measurer_;
};

}  // namespace Corvella
