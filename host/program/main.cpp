#include <QLatin1String>
#include <QString>
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <variant>

#include <qlogging.h>

#include "host/program/Autostart.h"
#include "host/program/CommandLine.h"
#include "host/program/HelpTexts.h"
#include "host/program/PlayerChoice.h"
#include "host/program/PrintCommand.h"
#include "host/program/SnapshotCommand.h"
#include "host/program/StandardStreams.h"
#include "host/program/TodayCommand.h"

namespace Corvella {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

/// Returns the exit status.
int perform(const CommandLine& commandLine) {
  using Action = CommandLine::Action;
  switch (commandLine.action) {
    case Action::Open:
    case Action::Toggle:
      return runTodayCommand(commandLine);
    case Action::Quit:
      runQuitCommand();
      return 0;
    case Action::Autostart:
      runAutostartCommand(commandLine);
      return 0;
    case Action::Snapshot:
      runSnapshotCommand(commandLine);
      return 0;
    case Action::Print:
      runPrintCommand(commandLine);
      return 0;
    case Action::ListPlayers:
      printPlayers(std::cout, std::cerr);
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

/// Most of Qt's warnings are about its own surroundings and mean nothing to a user. One of them is
/// let through: that the connection to the display server broke, which ends the program.
void showOnlyGraveMessages(QtMsgType type, const QMessageLogContext& /*context*/,
                           const QString& message) {
  const bool isGrave = type == QtCriticalMsg || type == QtFatalMsg ||
                       message.contains(QLatin1String("connection broke"));
  if (isGrave) std::cerr << message.toStdString() << "\n";
}

int run(int argumentCount, char** arguments) {
  const auto parsed =
      parseCommandLine({arguments + (argumentCount > 0 ? 1 : 0), arguments + argumentCount});
  if (const auto* error = std::get_if<UsageError>(&parsed)) {
    std::cerr << "corvella: " << error->message << "\n\n" << usageText();
    return kWrongUsage;
  }
  try {
    const auto status = perform(std::get<CommandLine>(parsed));
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
  Corvella::secureStandardStreams();
  // Into a pipe, whole blocks would be written, and lines appear long after what they report.
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  qInstallMessageHandler(Corvella::showOnlyGraveMessages);
  return Corvella::run(argc, argv);
}
