#pragma once

#include <QObject>
#include <QPoint>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <optional>

namespace Corvella {

/// Where the panel's window stands: at the top right of a screen until the user puts it elsewhere,
/// and always so that it can be seen. Follows the window from screen to screen and when the free
/// part of its screen changes.
///
/// Part of the window, on the GUI thread.
class Placement final : public QObject {
  Q_OBJECT

 public:
  /// Of `window`, at least `leastHeight` pixels are kept on the screen.
  Placement(QWidget& window, int leastHeight);

  /// Moves the window, which is not shown yet, to where the user has put it, or to the top right of
  /// the screen that the pointer is on.
  void putWindow();
  /// Follows the window from now on. To be called each time before it is shown.
  void watch(QWindow& handle);

 signals:
  /// How tall the window may become, in pixels, without leaving the screen.
  void tallestChanged(int height);
  /// The desktop has the window on the screen now, or no more.
  void exposedChanged(bool isExposed);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void standOn(const QScreen& screen);
  void stayOnScreen();
  void follow(QScreen* screen);
  void tellTallest();
  void hasMovedTo(QPoint position);
  void settle();
  void takeExposure(bool isExposed);

  QWidget& window_;
  const int leastHeight_;
  std::optional<QPoint> chosen_;  // Where the user has put the window.
  QPoint asked_;                  // Where it is to stand.
  QPoint position_;               // Where it stands, as the desktop has told.
  bool isSettled_ = false;        // Whether it is the user alone who moves it now.
  bool isExposed_ = false;
  QMetaObject::Connection freePart_;
};

}  // namespace Corvella
