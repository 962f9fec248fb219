#include "host/TodayProgram.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QStandardPaths>
#include <algorithm>
#include <array>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/LateScriptRunner.h"
#include "host/ProgramServices.h"
#include "host/SingleInstance.h"
#include "host/SnapshotImage.h"
#include "host/TerminationSignals.h"
#include "host/TodayView.h"
#include "host/Tray.h"
#include "host/WidgetDisplay.h"

namespace Corvella {

namespace {

constexpr auto kPlatform = "QT_QPA_PLATFORM";

/// An application of Qt's, which keeps the arguments that it refers to. It takes none of ours.
class Application {
 public:
  Application() : application_(count_, arguments_.data()) {
    QApplication::setApplicationName("corvella");
    QApplication::setDesktopFileName("corvella");
    QApplication::setQuitOnLastWindowClosed(false);
  }

 private:
  std::string name_ = "corvella";
  int count_ = 1;
  std::array<char*, 2> arguments_{name_.data(), nullptr};
  QApplication application_;
};

/// The Today view with all that stands behind it.
struct Composition {
  explicit Composition(const std::string& player)
      : runner([this, player] { return services.makeScriptRunner(player); },
               [this](const std::string& reason) { bridge.startFailed(reason); }),
        view(services.with(runner), bridge,
             player == "auto" ? "The player" : QString::fromStdString(player)) {}

  ProgramServices services;
  WidgetBridge bridge;
  LateScriptRunner runner;
  TodayView view;
};

WidgetDisplay draw(const CommandLine& commandLine, const std::string& file) {
  Composition composition(commandLine.player);
  SnapshotImage image(composition.view, composition.bridge);
  image.open(commandLine.lyrics);
  image.write(file, commandLine.scale);
  return image.display();
}

/// Where a snapshot goes that nobody has named: beside the program, or among temporary files where
/// that is not ours to write in.
std::string unnamedSnapshot() {
  const auto folder = QCoreApplication::applicationDirPath();
  const auto chosen = QFileInfo(folder).isWritable()
                          ? folder
                          : QStandardPaths::writableLocation(QStandardPaths::TempLocation);
  return (chosen + "/corvella-snapshot.png").toStdString();
}

int drawInsteadOfWindow(const CommandLine& commandLine) {
  const auto file = unnamedSnapshot();
  std::cerr << "corvella: no display server can be reached; drawing " << file << " instead\n";
  std::cout << displayText(draw(commandLine, file));
  return 0;
}

/// Has Qt try the display servers that there are and, without one, do without.
void choosePlatform() {
  if (qEnvironmentVariableIsSet(kPlatform)) return;
  std::string platforms;
  if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) platforms += "wayland;";
  if (!qEnvironmentVariableIsEmpty("DISPLAY")) platforms += "xcb;";
  qputenv(kPlatform, QByteArray::fromStdString(platforms + "offscreen"));
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

void connectInstance(const SingleInstance& instance, TodayView& view) {
  QObject::connect(&instance, &SingleInstance::told, &view, [&view](auto message) {
    message == SingleInstance::Message::Toggle ? view.toggle() : view.open();
  });
}

std::unique_ptr<Tray> makeTray(TodayView& view) {
  if (!Tray::isAvailable()) return nullptr;
  auto tray = std::make_unique<Tray>(QApplication::windowIcon());
  QObject::connect(tray.get(), &Tray::toggled, &view, &TodayView::toggle);
  QObject::connect(tray.get(), &Tray::quitRequested, qApp, &QApplication::quit);
  return tray;
}

QIcon programIcon() {
  const auto share = QCoreApplication::applicationDirPath() + "/../share/";
  const QIcon unpacked(share + "corvella/corvella.png");
  return QIcon::fromTheme("corvella", unpacked);
}

int runWindow(const CommandLine& commandLine, TerminationSignals& termination,
              const SingleInstance* instance) {
  Composition composition(commandLine.player);
  auto& view = composition.view;
  QApplication::setWindowIcon(programIcon());
  const auto tray = makeTray(view);
  std::optional<std::string> failure;
  QObject::connect(&composition.bridge, &WidgetBridge::failed, [&](const QString& reason) {
    failure = reason.toStdString();
    QApplication::quit();
  });
  if (!tray) {
    QObject::connect(&view.window(), &TodayWindow::closeRequested, qApp, &QApplication::quit);
  }
  QObject::connect(&termination, &TerminationSignals::received, qApp, &QApplication::quit);
  termination.listen();
  if (instance != nullptr) connectInstance(*instance, view);
  view.open();
  const auto status = QApplication::exec();
  view.hide();  // What follows may wait for a script.
  if (failure) throw std::runtime_error(*failure);
  return status;
}

}  // namespace

int runTodayView(const CommandLine& commandLine) {
  auto termination = std::make_unique<TerminationSignals>();
  const bool chosenByUser = qEnvironmentVariableIsSet(kPlatform);
  choosePlatform();
  const Application application;
  if (!chosenByUser && QGuiApplication::platformName() == "offscreen") {
    termination = nullptr;
    return drawInsteadOfWindow(commandLine);
  }
  bool first = false;
  const auto instance = takePlace(first);
  if (first) return runWindow(commandLine, *termination, instance.get());
  const bool toggles = commandLine.action == CommandLine::Action::Toggle;
  using Message = SingleInstance::Message;
  if (!instance->tellFirst(toggles ? Message::Toggle : Message::Open)) {
    throw std::runtime_error("the corvella that is running does not answer");
  }
  return 0;
}

void drawSnapshot(const CommandLine& commandLine) {
  qputenv(kPlatform, "offscreen");
  const Application application;
  draw(commandLine, commandLine.file);
}

}  // namespace Corvella
