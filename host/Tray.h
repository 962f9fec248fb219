#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

namespace Corvella {

/// Corvella's icon in the tray of desktops that have one.
class Tray final : public QObject {
  Q_OBJECT

 public:
  static bool isAvailable() { return QSystemTrayIcon::isSystemTrayAvailable(); }

  explicit Tray(const QIcon& icon);

 signals:
  void toggled();
  void quitRequested();

 private:
  QMenu menu_;
  QSystemTrayIcon icon_;
};

}  // namespace Corvella
