#pragma once

class QWidget;

namespace Corvella {

/// Has a window stand at the top right of its screen, above other windows, as a surface in a layer
/// of the desktop. Only compositors on Wayland know these, many but not all of them, and only where
/// the library for it was there when the program was built. To be called before the window is shown
/// for the first time. Returns whether it is such a surface, which cannot be moved, covered or
/// minimized. GUI thread.
bool becomeLayerSurface(QWidget& window);

}  // namespace Corvella
