#pragma once

#include <QMenu>
#include <QObject>
#include <QString>
#include <QSystemTrayIcon>
#include <functional>

#include "host/panel/PlayerMenu.h"

namespace Corvella {

/// Corvella's icon in the tray of desktops that have one.
class Tray final : public QObject {
  Q_OBJECT

 public:
  static bool isAvailable() { return QSystemTrayIcon::isSystemTrayAvailable(); }

  /// `players` is called each time the list of players opens.
  Tray(const QIcon& icon, std::function<PlayerList()> players);

  /// What is playing; empty when that is not known.
  void setTitle(const QString& title);

  PlayerMenu& playerMenu() { return players_; }

 signals:
  void toggled();
  void quitRequested();

 private:
  QMenu menu_;
  PlayerMenu players_;
  QSystemTrayIcon icon_{this};
};

}  // namespace Corvella
