#include "host/panel/LayerSurface.h"

#ifdef CORVELLA_LAYER_SHELL

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include <LayerShellQt/Window>

namespace Corvella {

bool becomeLayerSurface(QWidget& window) {
  if (!QGuiApplication::platformName().startsWith("wayland")) return false;
  // GNOME has no layers, and the library does not tell that it got none.
  if (qgetenv("XDG_CURRENT_DESKTOP").contains("GNOME")) return false;
  window.winId();  // Makes the window, which is not shown yet.
  auto* const surface = LayerShellQt::Window::get(window.windowHandle());
  if (surface == nullptr) return false;
  using Surface = LayerShellQt::Window;
  constexpr int kMargin = 8;  // As on other desktops.
  surface->setScope("corvella");
  surface->setLayer(Surface::LayerTop);
  surface->setAnchors({Surface::AnchorTop, Surface::AnchorRight});
  surface->setMargins({0, kMargin, kMargin, 0});
  surface->setKeyboardInteractivity(Surface::KeyboardInteractivityOnDemand);
  return true;
}

}  // namespace Corvella

#else

namespace Corvella {

bool becomeLayerSurface(QWidget& /*window*/) {
  return false;
}

}  // namespace Corvella

#endif
