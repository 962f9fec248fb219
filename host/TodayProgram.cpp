#include "host/TodayProgram.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QStandardPaths>
#include <QTimer>
#include <QToolTip>
#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "host/AwaitedScriptRunner.h"
#include "host/FontPreload.h"
#include "host/ProgramFolders.h"
#include "host/ProgramServices.h"
#include "host/ResidentMemory.h"
#include "host/SingleInstance.h"
#include "host/SnapshotImage.h"
#include "host/TerminationSignals.h"
#include "host/Theme.h"
#include "host/TodayView.h"
#include "host/Tray.h"
#include "host/WidgetDisplay.h"

namespace Corvella {

namespace {

constexpr auto kPlatform = "QT_QPA_PLATFORM";
constexpr auto kNoDisplay = "offscreen";
constexpr std::chrono::milliseconds kUntilWindowStands{300};
constexpr std::chrono::seconds kUntilAllIsShown{3};
constexpr std::chrono::seconds kLastLookForTray{15};

/// An application of Qt's, which keeps the arguments that it refers to. It takes none of ours.
class Application {
 public:
  Application() : Application(std::make_unique<FontPreload>()) {}

 private:
  explicit Application(std::unique_ptr<FontPreload> fonts)
      : application_(count_, arguments_.data()) {
    fonts = nullptr;  // Read while Qt has reached for the display server.
    QApplication::setApplicationName("corvella");
    QApplication::setDesktopFileName("corvella");
    QApplication::setQuitOnLastWindowClosed(false);
    QToolTip::setPalette(theme::toolTipPalette());
  }

  std::string name_ = "corvella";
  int count_ = 1;
  std::array<char*, 2> arguments_{name_.data(), nullptr};
  QApplication application_;
};

/// A player that is being reached, which takes a while, and the services around it. Needs no
/// application yet.
struct Player {
  explicit Player(std::string choice)
      : name(std::move(choice)), runner([this] { return services.makeScriptRunner(name); }) {}

  const std::string name;
  const ProgramServices services;
  AwaitedScriptRunner runner;
};

/// The Today view with all that stands behind it.
struct Composition {
  explicit Composition(Player& player)
      : view(player.services.with(player.runner), bridge,
             player.name == "auto" ? "The player" : QString::fromStdString(player.name)) {
    player.runner.setFailed([this](const std::string& reason) { bridge.startFailed(reason); });
  }

  WidgetBridge bridge;
  TodayView view;
};

/// Where a snapshot goes that nobody has named: beside the program, or into the user's own folder
/// where that is not ours to write in.
std::string unnamedSnapshot() {
  const auto folder = QString::fromStdString(ProgramFolders::program());
  const auto chosen = QFileInfo(folder).isWritable()
                          ? folder
                          : QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  return (chosen + "/corvella-snapshot.png").toStdString();
}

int drawInsteadOfWindow(const CommandLine& commandLine, Player& player) {
  std::cerr << "corvella: no display server can be reached\n";
  Composition composition(player);
  SnapshotImage image(composition.view, composition.bridge);
  image.open(commandLine.lyrics);
  std::cout << displayText(image.display());
  const auto file = unnamedSnapshot();
  try {
    image.write(file, commandLine.scale);
    std::cerr << "corvella: drew " << file << " instead\n";
  } catch (const std::runtime_error& error) {
    std::cerr << "corvella: " << error.what() << "\n";
  }
  return 0;
}

/// Has Qt try the display servers that there are, or those that the user names, and, without one,
/// do without. Gives whether the user wants it to do without.
bool choosePlatform() {
  std::string platforms;
  if (qEnvironmentVariableIsSet(kPlatform)) {
    platforms = qgetenv(kPlatform).toStdString();
    if (platforms.find(kNoDisplay) != std::string::npos) return true;
    platforms += ";";
  } else {
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) platforms += "wayland;";
    if (!qEnvironmentVariableIsEmpty("DISPLAY")) platforms += "xcb;";
  }
  qputenv(kPlatform, QByteArray::fromStdString(platforms + kNoDisplay));
  return false;
}

/// The one instance of this user; absent, with a notice, where that cannot be told.
std::unique_ptr<SingleInstance> takePlace(bool& first) {
  const auto folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  auto instance = std::make_unique<SingleInstance>(folder);
  try {
    first = instance->becomeFirst();
    return instance;
  } catch (const std::runtime_error& error) {
    std::cerr << "corvella: " << error.what() << "; other instances will not find this one\n";
    first = true;
    return nullptr;
  }
}

void tellFirst(const SingleInstance& instance, CommandLine::Action action) {
  using Message = SingleInstance::Message;
  const bool toggles = action == CommandLine::Action::Toggle;
  if (!instance.tellFirst(toggles ? Message::Toggle : Message::Open)) {
    throw std::runtime_error("the corvella that is running does not answer");
  }
}

void connectInstance(SingleInstance& instance, TodayView& view) {
  QObject::connect(&instance, &SingleInstance::told, &view, [&view](auto message) {
    message == SingleInstance::Message::Toggle ? view.toggle() : view.open();
  });
  instance.listen();
}

QIcon programIcon() {
  // In the build tree it lies among the resources; installed, in the icon theme.
  const auto unpacked = ProgramFolders::resources() / "corvella.png";
  return QIcon::fromTheme("corvella", QIcon(QString::fromStdString(unpacked)));
}

/// The Today view on a desktop, until the user ends it.
class OnDesktop {
 public:
  explicit OnDesktop(Player& player) : composition_(player) {
    auto& view = composition_.view;
    QObject::connect(&composition_.bridge, &WidgetBridge::failed, [this](const QString& reason) {
      failure_ = reason.toStdString();
      QApplication::quit();
    });
    QObject::connect(&view, &TodayView::closeRequested, [this] {
      if (!tray_) QApplication::quit();
    });
    setUpAftermath();
  }

  TodayView& view() { return composition_.view; }

  /// Returns the exit status. Throws `std::runtime_error` when the widget does not start.
  int run() {
    view().open();
    const auto status = QApplication::exec();
    view().hide();  // What follows may wait for a script.
    if (failure_) throw std::runtime_error(*failure_);
    return status;
  }

 private:
  /// What can wait until the window stands, or until all is shown.
  void setUpAftermath() {
    lookForTray_.setSingleShot(true);
    QObject::connect(&lookForTray_, &QTimer::timeout, [this] {
      if (QApplication::windowIcon().isNull()) QApplication::setWindowIcon(programIcon());
      lookForTray();
    });
    allIsShown_.setSingleShot(true);
    allIsShown_.setInterval(kUntilAllIsShown);
    QObject::connect(&allIsShown_, &QTimer::timeout, ResidentMemory::release);
    QObject::connect(&view(), &TodayView::appeared, [this] {
      if (!tray_) lookForTray_.start(kUntilWindowStands);
      allIsShown_.start();
    });
    QObject::connect(&view(), &TodayView::disappeared, [this] {
      lookForTray_.stop();
      allIsShown_.stop();
      ResidentMemory::release();
    });
  }

  /// A desktop that starts the program by itself may have a tray only a little later.
  void lookForTray() {
    if (!Tray::isAvailable()) {
      if (lookForTray_.intervalAsDuration() < kLastLookForTray) {
        lookForTray_.start(4 * lookForTray_.intervalAsDuration());
      }
      return;
    }
    tray_ = std::make_unique<Tray>(QApplication::windowIcon());
    QObject::connect(tray_.get(), &Tray::toggled, &view(), &TodayView::toggle);
    QObject::connect(tray_.get(), &Tray::quitRequested, qApp, &QApplication::quit);
  }

  std::optional<std::string> failure_;
  std::unique_ptr<Tray> tray_;
  QTimer lookForTray_;
  QTimer allIsShown_;
  Composition composition_;
};

int runWindow(Player& player, TerminationSignals& termination, SingleInstance* instance) {
  OnDesktop desktop(player);
  QObject::connect(&termination, &TerminationSignals::received, qApp, &QApplication::quit);
  termination.listen();
  if (instance != nullptr) connectInstance(*instance, desktop.view());
  return desktop.run();
}

}  // namespace

int runTodayView(const CommandLine& commandLine) {
  ResidentMemory::economise();
  bool first = false;
  auto instance = takePlace(first);
  if (!first) {
    tellFirst(*instance, commandLine.action);
    return 0;
  }
  auto termination = std::make_unique<TerminationSignals>();
  const bool wantsNoDisplay = choosePlatform();
  Player player(commandLine.player);  // Is reached while Qt reaches for the display server.
  const Application application;
  if (!wantsNoDisplay && QGuiApplication::platformName() == kNoDisplay) {
    instance = nullptr;
    termination = nullptr;
    return drawInsteadOfWindow(commandLine, player);
  }
  return runWindow(player, *termination, instance.get());
}

void drawSnapshot(const CommandLine& commandLine) {
  qputenv(kPlatform, kNoDisplay);
  Player player(commandLine.player);
  const Application application;
  Composition composition(player);
  SnapshotImage image(composition.view, composition.bridge);
  image.open(commandLine.lyrics);
  image.write(commandLine.file, commandLine.scale);
}

}  // namespace Corvella
