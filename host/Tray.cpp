#include "host/Tray.h"

#include <QAction>

namespace Corvella {

Tray::Tray(const QIcon& icon) : icon_(icon) {
  connect(menu_.addAction("Show or hide"), &QAction::triggered, this, &Tray::toggled);
  connect(menu_.addAction("Quit"), &QAction::triggered, this, &Tray::quitRequested);
  connect(&icon_, &QSystemTrayIcon::activated, this, [this](auto reason) {
    if (reason == QSystemTrayIcon::Trigger) emit toggled();
  });
  icon_.setContextMenu(&menu_);
  icon_.setToolTip("Corvella");
  icon_.show();
}

}  // namespace Corvella
