#pragma once

#include <QColor>

#include "platform/appkit/NSColor.h"

namespace Corvella {

/// The Qt colour for one of the widget's.
inline QColor qtColor(const NSColor& color) {
  return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

}  // namespace Corvella
