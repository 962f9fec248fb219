#include "host/program/Application.h"

#include <QLocale>
#include <QToolTip>

#include "host/controls/Theme.h"

namespace Corvella {

Application::Application() {
  QApplication::setApplicationName("corvella");
  QApplication::setDesktopFileName("corvella");
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setLayoutDirection(QLocale().textDirection());
  QToolTip::setPalette(theme::toolTipPalette());
}

}  // namespace Corvella
