#include "host/panel/Tray.h"

#include <QAction>
#include <utility>

namespace Corvella {

Tray::Tray(const QIcon& icon, std::function<PlayerList()> players)
    : players_(std::move(players), &menu_) {
  icon_.setIcon(icon);
  connect(menu_.addAction("Show or hide"), &QAction::triggered, this, &Tray::toggled);
  menu_.addMenu(&players_);
  connect(menu_.addAction("Quit"), &QAction::triggered, this, &Tray::quitRequested);
  connect(&icon_, &QSystemTrayIcon::activated, this, [this](auto reason) {
    if (reason == QSystemTrayIcon::Trigger) emit toggled();
  });
  icon_.setContextMenu(&menu_);
  setTitle({});
  icon_.show();
}

void Tray::setTitle(const QString& title) {
  icon_.setToolTip(title.isEmpty() ? "Corvella" : title);
}

}  // namespace Corvella
