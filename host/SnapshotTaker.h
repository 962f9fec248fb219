#pragma once

#include <vector>

#include "host/WidgetSnapshot.h"
#include "platform/appkit/NSView.h"

namespace Corvella {

/// Writes down what the views of the hierarchy under `root` show that are marked for display, and
/// clears their marks. Main queue.
std::vector<ViewSnapshot> takeSnapshot(NSView& root);

}  // namespace Corvella
