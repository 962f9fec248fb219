#pragma once

#include "platform/appkit/NSFontFinder.h"
#include "platform/appkit/NSImageDecoder.h"
#include "platform/appkit/NSInterfaceLoader.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/NSBundle.h"
#include "scripting/ScriptRunner.h"

namespace Corvella {

/// The platform's services that the widget's controller works with. All of them outlive it.
struct TodayViewServices {
  const NSInterfaceLoader& interfaceLoader;
  RunLoop& mainRunLoop;  ///< Where the progress timer is scheduled.
  DispatchQueue& mainQueue;
  DispatchQueue& globalQueue;  ///< Runs several blocks at the same time.
  ScriptRunner& scriptRunner;
  const NSBundle& bundle;
  const NSImageDecoder& imageDecoder;
  const NSFontFinder& fontFinder;
};

}  // namespace Corvella
