#include "host/program/TodayCommand.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>

#include <malloc.h>

#include "host/panel/TodayView.h"
#include "host/program/Application.h"
#include "host/program/Composition.h"
#include "host/program/DesktopProgram.h"
#include "host/program/DisplayText.h"
#include "host/program/ProgramFolders.h"
#include "host/program/SingleInstance.h"
#include "host/program/StandardStreams.h"
#include "host/program/TerminationSignals.h"
#include "host/program/ViewPicture.h"
#include "players/mpris/bus/SessionBus.h"

namespace Corvella {

namespace {

constexpr auto kPlatform = "QT_QPA_PLATFORM";
constexpr auto kNoDisplay = "offscreen";
constexpr std::chrono::seconds kPatienceWithBus{1};
constexpr auto kFirstIsSilent = "the corvella that is running does not answer";

/// The file for a picture that the user has not asked for, and so not named: beside the program
/// that was built in the user's own folder, and in the user's runtime folder when it is installed,
/// where no other file belongs. Throws `std::runtime_error` when there is no such folder.
std::string unnamedPicture() {
  const auto folder = QString::fromStdString(ProgramFolders::program());
  const bool isInstalled = !std::filesystem::is_symlink(ProgramFolders::resources());
  const auto chosen = !isInstalled && QFileInfo(folder).isWritable()
                          ? folder
                          : QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  if (chosen.isEmpty()) throw std::runtime_error("there is no folder for a picture of the view");
  return (chosen + "/corvella-snapshot.png").toStdString();
}

int drawInsteadOfWindow(TodayView& view) {
  std::cerr << "corvella: no display server can be reached\n";
  const CommandOutput output;
  openUnseen(view, false);
  output.print(displayText(view.display()));
  try {
    const auto file = unnamedPicture();
    writePicture(view, file, 1);
    std::cerr << "corvella: drew " << file << " instead\n";
  } catch (const std::runtime_error& error) {
    std::cerr << "corvella: " << error.what() << "\n";
  }
  return 0;
}

/// Has Qt try the display servers that there are, or those that the user names, and draw offscreen
/// when none can be reached: otherwise Qt would end the program. Returns whether the user asked for
/// drawing offscreen.
bool choosePlatform() {
  std::string platforms;
  if (!qEnvironmentVariableIsEmpty(kPlatform)) {
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

/// Has large buffers, such as those of a cover, given back to the system as soon as they are freed.
/// By itself the allocator raises the limit with each of them, and keeps their memory.
void keepNoLargeBuffers() {
  constexpr int kLarge = 128 * 1024;  // Bytes.
  // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs yet.
  ::mallopt(M_MMAP_THRESHOLD, kLarge);
}

/// Qt waits without a limit for a session bus that takes connections and does not answer: for the
/// program's name, for the tray and for assistive technology. So where the bus does not answer, the
/// one connection that Qt makes for all of these is made to nowhere. The players are followed
/// without Qt, and are shown once the bus answers.
void keepQtFromSilentBus() {
  constexpr auto kAddress = "DBUS_SESSION_BUS_ADDRESS";
  if (sessionBusAnswers(kPatienceWithBus)) return;
  const bool isSet = qEnvironmentVariableIsSet(kAddress);
  const auto address = qgetenv(kAddress);
  qputenv(kAddress, "unix:path=/dev/null");
  QDBusConnection::sessionBus();
  isSet ? qputenv(kAddress, address) : qunsetenv(kAddress);
}

void tellFirst(const SingleInstance& instance, const CommandLine& commandLine) {
  const bool toggles = commandLine.action == CommandLine::Action::Toggle;
  const auto player = QString::fromStdString(commandLine.player);
  const bool heard = (!commandLine.playerIsGiven || instance.tellFirst("ShowPlayer", {player})) &&
                     (commandLine.hidden || instance.tellFirst(toggles ? "Toggle" : "Open"));
  if (!heard) throw std::runtime_error(kFirstIsSilent);
}

}  // namespace

int runTodayCommand(const CommandLine& commandLine) {
  TerminationSignals termination;
  const bool wantsNoDisplay = choosePlatform();
  keepNoLargeBuffers();
  keepQtFromSilentBus();
  const Application application;
  SingleInstance instance;
  const auto role = instance.claimName();
  if (role == SingleInstance::Role::Later) {
    tellFirst(instance, commandLine);
    return 0;
  }
  if (role == SingleInstance::Role::Alone) {
    std::cerr << "corvella: no session bus answers; other instances will not find this one\n";
  }
  const Composition composition;
  TodayView view(composition.starter(), commandLine.player);
  const bool noDisplay = QGuiApplication::platformName() == kNoDisplay;
  if (noDisplay && !wantsNoDisplay) {
    if (commandLine.hidden) throw std::runtime_error("no display server can be reached");
    return drawInsteadOfWindow(view);
  }
  return DesktopProgram(view, instance, termination).run(commandLine.hidden);
}

void runQuitCommand() {
  int argumentCount = 0;
  const QCoreApplication application(argumentCount, nullptr);
  if (!sessionBusAnswers(kPatienceWithBus)) {
    requireSessionBus();
    throw std::runtime_error("the session bus does not answer");
  }
  const SingleInstance instance;
  if (instance.isThereAFirst() && !instance.tellFirst("Quit")) {
    throw std::runtime_error(kFirstIsSilent);
  }
}

}  // namespace Corvella
