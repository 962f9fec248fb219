#include "host/program/Application.h"

#include <QToolTip>

#include "host/controls/Theme.h"

namespace Corvella {

Application::Application() {
  QApplication::setApplicationName("corvella");
  QApplication::setDesktopFileName("corvella");
  QApplication::setQuitOnLastWindowClosed(false);
  QToolTip::setPalette(theme::toolTipPalette());
}

}  // namespace Corvella
