#include "host/panel/Placement.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QMargins>
#include <QMoveEvent>
#include <algorithm>

#include "host/panel/PanelPlace.h"

namespace Corvella {

namespace {

QScreen* screenUnderPointer() {
  auto* const primary = QGuiApplication::primaryScreen();
  // Where the pointer is has to be asked of the display server, which takes time at the start.
  if (QGuiApplication::screens().size() == 1) return primary;
  auto* const screen = QGuiApplication::screenAt(QCursor::pos());
  return screen != nullptr ? screen : primary;
}

}  // namespace

Placement::Placement(QWidget& window, int leastHeight)
    : QObject(&window), window_(window), leastHeight_(leastHeight) {}

void Placement::putWindow() {
  auto* const chosenScreen = chosen_ ? QGuiApplication::screenAt(*chosen_) : nullptr;
  standOn(chosenScreen != nullptr ? *chosenScreen : *screenUnderPointer());
}

void Placement::watch(QWindow& handle) {
  handle.installEventFilter(this);
  connect(&handle, &QWindow::screenChanged, this, &Placement::follow, Qt::UniqueConnection);
  follow(handle.screen());
}

void Placement::standOn(const QScreen& screen) {
  const auto place = panelPlace(screen.availableGeometry(), window_.width(), leastHeight_, chosen_);
  asked_ = place.position;
  if (!isExposed_) position_ = asked_;  // Until the desktop tells otherwise.
  isSettled_ = isExposed_ && position_ == asked_;
  emit tallestChanged(place.tallest);
  window_.move(asked_);
}

void Placement::stayOnScreen() {
  if (window_.isVisible()) standOn(*window_.screen());
}

void Placement::follow(QScreen* screen) {
  disconnect(freePart_);
  if (screen == nullptr) return;
  freePart_ = connect(screen, &QScreen::availableGeometryChanged, this, &Placement::stayOnScreen);
  if (!isExposed_) return;
  // The screen that the window stood on may have been taken away, and the window left outside.
  const bool isSeen = screen->availableGeometry().intersects({position_, window_.size()});
  isSeen ? tellTallest() : standOn(*screen);
}

void Placement::tellTallest() {
  // The window is left where it is, even if it hangs over the edge: the user has it in hand.
  const auto free = window_.screen()->availableGeometry();
  const auto place = panelPlace(free, window_.width(), 0, position_);
  emit tallestChanged(std::max(std::min(leastHeight_, free.height()), place.tallest));
}

/// While the window is being shown, or put elsewhere because its screen has changed, window
/// managers may move it about on their own. Once it stands as asked, it is the user who moves it:
/// by its heading, or by the window manager's own keys, of which the window is told nothing else.
void Placement::hasMovedTo(QPoint position) {
  position_ = position;
  if (position == asked_) {
    isSettled_ = isExposed_;
  } else if (isSettled_) {
    chosen_ = asked_ = position;
    tellTallest();
  }
}

/// A window manager that has put the window elsewhere than asked has done so by the time that the
/// user can reach it.
void Placement::settle() {
  if (isSettled_ || !isExposed_) return;
  isSettled_ = true;
  if (position_ == asked_) return;
  asked_ = position_;
  tellTallest();
}

void Placement::takeExposure(bool isExposed) {
  if (isExposed == isExposed_) return;
  isExposed_ = isExposed;
  isSettled_ = isExposed && position_ == asked_;
  emit exposedChanged(isExposed);
}

bool Placement::eventFilter(QObject* watched, QEvent* event) {
  auto& handle = *static_cast<QWindow*>(watched);
  const auto frame = handle.frameMargins();
  switch (event->type()) {
    case QEvent::Move:
      hasMovedTo(static_cast<QMoveEvent*>(event)->pos() - QPoint(frame.left(), frame.top()));
      break;
    case QEvent::Expose:
      takeExposure(handle.isExposed());
      break;
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
      settle();
      break;
    default:
      break;
  }
  return false;
}

}  // namespace Corvella
