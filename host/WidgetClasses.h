#pragma once

#include "platform/foundation/NSClassRegistry.h"

namespace Corvella {

/// Makes the classes known that the widget's interface file names, but for the controller.
void registerWidgetClasses(NSClassRegistry& classes);

}  // namespace Corvella
