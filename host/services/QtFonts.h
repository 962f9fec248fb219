#pragma once

#include <QFont>

#include "platform/appkit/NSFont.h"

namespace Corvella {

/// The Qt font for one of the widget's, null standing for the default. One point of the widget is
/// one device-independent pixel, also for fonts. Any thread.
QFont qtFont(const NSFont* font);

}  // namespace Corvella
