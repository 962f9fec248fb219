#include "host/TodayProgram.h"

#include <QApplication>
#include <QFileInfo>
#include <QStandardPaths>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/Composition.h"
#include "host/OnDesktop.h"
#include "host/ProgramFolders.h"
#include "host/SingleInstance.h"
#include "host/SnapshotImage.h"
#include "host/TerminationSignals.h"
#include "host/WidgetDisplay.h"

namespace Corvella {

namespace {

constexpr auto kPlatform = "QT_QPA_PLATFORM";
constexpr auto kNoDisplay = "offscreen";
constexpr auto kInputMethod = "QT_IM_MODULE";

/// Where a snapshot goes that nobody has named: beside the program, or into the user's own folder
/// where that is not ours to write in.
std::string unnamedSnapshot() {
  const auto folder = QString::fromStdString(ProgramFolders::program());
  const auto chosen = QFileInfo(folder).isWritable()
                          ? folder
                          : QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  return (chosen + "/corvella-snapshot.png").toStdString();
}

int drawInsteadOfWindow(Composition& composition) {
  std::cerr << "corvella: no display server can be reached\n";
  SnapshotImage image(composition.view(), composition.bridge());
  image.open(false);
  std::cout << displayText(image.display());
  const auto file = unnamedSnapshot();
  try {
    image.write(file, 1);
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

int runWindow(Composition& composition, TerminationSignals& termination, SingleInstance* instance) {
  OnDesktop desktop(composition.view(), composition.bridge());
  QObject::connect(&termination, &TerminationSignals::received, qApp, &QApplication::quit);
  termination.listen();
  if (instance != nullptr) connectInstance(*instance, composition.view());
  return desktop.run();
}

}  // namespace

int runTodayView(const CommandLine& commandLine) {
  bool first = false;
  auto instance = takePlace(first);
  if (!first) {
    tellFirst(*instance, commandLine.action);
    return 0;
  }
  auto termination = std::make_unique<TerminationSignals>();
  const bool wantsNoDisplay = choosePlatform();
  qputenv(kInputMethod, "none");  // There is nothing to write text in.
  Composition composition(commandLine.player);
  if (!wantsNoDisplay && QGuiApplication::platformName() == kNoDisplay) {
    instance = nullptr;
    termination = nullptr;
    return drawInsteadOfWindow(composition);
  }
  return runWindow(composition, *termination, instance.get());
}

void drawSnapshot(const CommandLine& commandLine) {
  qputenv(kPlatform, kNoDisplay);
  Composition composition(commandLine.player);
  SnapshotImage image(composition.view(), composition.bridge());
  image.open(commandLine.lyrics);
  image.write(commandLine.file, commandLine.scale);
}

}  // namespace Corvella
