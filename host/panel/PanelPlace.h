#pragma once

#include <QPoint>
#include <QRect>
#include <optional>

namespace Corvella {

/// Where the panel stands on the screen, and how tall it may become there without leaving it.
struct PanelPlace {
  QPoint position;
  int tallest = 0;
};

/// The place of a panel `width` wide on the free part of a screen: at the top right, or where the
/// user has dragged it, moved so far that all of its width and at least `leastHeight` stay on the
/// screen. All in device-independent pixels.
PanelPlace panelPlace(const QRect& free, int width, int leastHeight,
                      const std::optional<QPoint>& dragged);

}  // namespace Corvella
