#include <QByteArray>
#include <QGuiApplication>
#include <QLatin1String>
#include <QString>
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include <qlogging.h>

#include "host/CommandLine.h"
#include "host/DisplayReader.h"
#include "host/PlayerSelection.h"
#include "host/ProgramServices.h"
#include "host/TodayProgram.h"
#include "host/WidgetDisplay.h"

namespace Corvella {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

void print(const CommandLine& commandLine, int& argumentCount, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argumentCount, arguments);
  const ProgramServices services;
  const auto runner = services.makeScriptRunner(commandLine.player);
  DisplayReader reader(services.with(*runner));
  const auto display = reader.read(commandLine.lyrics);
  std::cout << displayText(display);
  if (commandLine.lyrics) std::cout << lyricsText(display);
}

/// Returns the exit status.
int perform(const CommandLine& commandLine, int& argumentCount, char** arguments) {
  using Action = CommandLine::Action;
  switch (commandLine.action) {
    case Action::Open:
    case Action::Toggle:
      return runTodayView(commandLine);
    case Action::Snapshot:
      drawSnapshot(commandLine);
      return 0;
    case Action::Print:
      print(commandLine, argumentCount, arguments);
      return 0;
    case Action::ListPlayers:
      listPlayers(std::cout, std::cerr);
      return 0;
    case Action::Help:
      std::cout << usageText();
      return 0;
    case Action::Version:
      std::cout << "corvella " CORVELLA_VERSION "\n";
      return 0;
  }
  return kFailed;
}

/// Most of Qt's warnings are about its own surroundings and mean nothing to a user; that the
/// display server is gone, which ends the program, does.
void showOnlyGraveMessages(QtMsgType type, const QMessageLogContext& /*context*/,
                           const QString& message) {
  const bool isGrave = type == QtCriticalMsg || type == QtFatalMsg ||
                       message.contains(QLatin1String("connection broke"));
  if (isGrave) std::cerr << message.toStdString() << "\n";
}

int run(int& argumentCount, char** arguments) {
  const auto parsed =
      parseCommandLine({arguments + (argumentCount > 0 ? 1 : 0), arguments + argumentCount});
  if (const auto* error = std::get_if<UsageError>(&parsed)) {
    std::cerr << "corvella: " << error->message << "\n\n" << usageText();
    return kWrongUsage;
  }
  try {
    const auto status = perform(std::get<CommandLine>(parsed), argumentCount, arguments);
    std::cout.flush();
    if (!std::cout) throw std::runtime_error("cannot write to standard output");
    return status;
  } catch (const std::exception& error) {
    std::cerr << "corvella: " << error.what() << "\n";
    return kFailed;
  }
}

}  // namespace

}  // namespace Corvella

int main(int argc, char** argv) {
  // Lines appear when they are written, also in a pipe.
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  qInstallMessageHandler(Corvella::showOnlyGraveMessages);
  return Corvella::run(argc, argv);
}
