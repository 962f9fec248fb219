#include "host/OnDesktop.h"

#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QString>
#include <chrono>
#include <stdexcept>

#include "host/ProgramFolders.h"
#include "host/ResidentMemory.h"

namespace Corvella {

namespace {

constexpr std::chrono::milliseconds kUntilWindowStands{300};
constexpr std::chrono::seconds kUntilAllIsShown{3};
constexpr std::chrono::seconds kLastLookForTray{15};

QIcon programIcon() {
  // In the build tree it lies among the resources; installed, in the icon theme.
  if (QIcon::hasThemeIcon("corvella")) return QIcon::fromTheme("corvella");
  const auto unpacked = ProgramFolders::resources() / "corvella.png";
  return QPixmap(QString::fromStdString(unpacked), "png");
}

}  // namespace

OnDesktop::OnDesktop(TodayView& view, WidgetBridge& bridge) : view_(view) {
  QObject::connect(&bridge, &WidgetBridge::failed, &lookForTray_, [this](const QString& reason) {
    failure_ = reason.toStdString();
    QApplication::quit();
  });
  QObject::connect(&view, &TodayView::closeRequested, &lookForTray_, [this] {
    if (!tray_) QApplication::quit();
  });
  setUpAftermath();
}

int OnDesktop::run() {
  view_.open();
  const auto status = QApplication::exec();
  view_.hide();  // What follows may wait for a script.
  if (failure_) throw std::runtime_error(*failure_);
  return status;
}

/// What can wait until the window stands, or until all is shown.
void OnDesktop::setUpAftermath() {
  lookForTray_.setSingleShot(true);
  QObject::connect(&lookForTray_, &QTimer::timeout, [this] {
    if (QApplication::windowIcon().isNull()) QApplication::setWindowIcon(programIcon());
    lookForTray();
  });
  allIsShown_.setSingleShot(true);
  allIsShown_.setInterval(kUntilAllIsShown);
  QObject::connect(&allIsShown_, &QTimer::timeout, ResidentMemory::release);
  QObject::connect(&view_, &TodayView::appeared, &lookForTray_, [this] {
    if (!tray_) lookForTray_.start(kUntilWindowStands);
    allIsShown_.start();
  });
  QObject::connect(&view_, &TodayView::disappeared, &lookForTray_, [this] {
    lookForTray_.stop();
    allIsShown_.stop();
    ResidentMemory::release();
  });
}

/// A desktop that starts the program by itself may have a tray only a little later.
void OnDesktop::lookForTray() {
  if (!Tray::isAvailable()) {
    if (lookForTray_.intervalAsDuration() < kLastLookForTray) {
      lookForTray_.start(4 * lookForTray_.intervalAsDuration());
    }
    return;
  }
  tray_ = std::make_unique<Tray>(QApplication::windowIcon());
  QObject::connect(tray_.get(), &Tray::toggled, &view_, &TodayView::toggle);
  QObject::connect(tray_.get(), &Tray::quitRequested, qApp, &QApplication::quit);
}

}  // namespace Corvella
