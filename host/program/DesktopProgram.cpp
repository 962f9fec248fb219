#include "host/program/DesktopProgram.h"

#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QString>
#include <chrono>
#include <stdexcept>

#include <malloc.h>

#include "host/program/ProgramFolders.h"

namespace Corvella {

namespace {

constexpr std::chrono::milliseconds kUntilWindowStands{300};
constexpr std::chrono::seconds kLastLookForTray{15};

QIcon programIcon() {
  // The icon theme has the icon only when the program is installed.
  if (QIcon::hasThemeIcon("corvella")) return QIcon::fromTheme("corvella");
  const auto unpacked = ProgramFolders::resources() / "icons" / "256.png";
  return QPixmap(QString::fromStdString(unpacked), "png");
}

}  // namespace

DesktopProgram::DesktopProgram(TodayView& view, SingleInstance& instance,
                               TerminationSignals& termination)
    : view_(view) {
  QObject::connect(&view, &TodayView::failed, &lookForTray_, [this](const QString& reason) {
    failure_ = reason.toStdString();
    QApplication::quit();
  });
  QObject::connect(&view, &TodayView::closeRequested, &lookForTray_, [this] {
    if (!tray_) QApplication::quit();
  });
  QObject::connect(&view, &TodayView::appeared, &lookForTray_, [this] {
    if (!tray_) lookForTray_.start(kUntilWindowStands);
  });
  QObject::connect(&view, &TodayView::disappeared, &lookForTray_, [this] {
    lookForTray_.stop();  // A hidden program must not wake up.
    // Covers are freed in pieces, which the allocator would keep for a program that needs none.
    ::malloc_trim(0);
  });
  QObject::connect(&instance, &SingleInstance::openAsked, &view, &TodayView::open);
  QObject::connect(&instance, &SingleInstance::toggleAsked, &view, &TodayView::toggle);
  QObject::connect(&instance, &SingleInstance::playerAsked, &view,
                   [&view](const QString& player) { view.showPlayer(player.toStdString()); });
  QObject::connect(&instance, &SingleInstance::quitAsked, qApp, &QApplication::quit);
  // Qt's icon in the tray does not come back with the bus, and a program without an icon must not
  // hide when its window is closed.
  QObject::connect(&instance, &SingleInstance::busLost, &lookForTray_, [this] { tray_.reset(); });
  QObject::connect(&instance, &SingleInstance::busFound, &lookForTray_, [this] {
    if (!tray_) lookForTray_.start(kUntilWindowStands);
  });
  QObject::connect(&termination, &TerminationSignals::received, qApp, &QApplication::quit);
  termination.listen();
  lookForTray_.setSingleShot(true);
  lookForTray_.callOnTimeout([this] { lookForTray(); });
}

int DesktopProgram::run(bool hidden) {
  hidden ? lookForTray_.start(kUntilWindowStands) : view_.open();
  const auto status = QApplication::exec();
  if (!failure_) TerminationSignals::limitEnd();
  view_.hide();  // The view's end may wait for a script, and the window would stay until then.
  if (failure_) throw std::runtime_error(*failure_);
  return status;
}

/// A desktop that starts the program together with itself may make its tray only later, so the tray
/// is looked for a few times, at growing intervals.
void DesktopProgram::lookForTray() {
  if (QApplication::windowIcon().isNull()) QApplication::setWindowIcon(programIcon());
  if (Tray::isAvailable()) return showTray();
  const auto passed = lookForTray_.intervalAsDuration();
  if (passed < kLastLookForTray) lookForTray_.start(4 * passed);
}

void DesktopProgram::showTray() {
  tray_ = std::make_unique<Tray>(QApplication::windowIcon(), [this] { return view_.players(); });
  tray_->setTitle(view_.title());
  QObject::connect(&view_, &TodayView::titleChanged, tray_.get(), &Tray::setTitle);
  auto& players = tray_->playerMenu();
  QObject::connect(&players, &PlayerMenu::chosen, &view_, &TodayView::showPlayer);
  QObject::connect(&players, &PlayerMenu::raiseWanted, &view_, &TodayView::raisePlayer);
  QObject::connect(tray_.get(), &Tray::toggled, &view_, &TodayView::toggle);
  QObject::connect(tray_.get(), &Tray::quitRequested, qApp, &QApplication::quit);
}

}  // namespace Corvella
