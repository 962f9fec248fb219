#include <QGuiApplication>
#include <QString>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include <qlogging.h>

#include "host/CommandLine.h"
#include "host/DisplayReader.h"
#include "host/PlayerSelection.h"
#include "host/QtFontFinder.h"
#include "host/QtImageDecoder.h"
#include "host/QtTextMeasurer.h"
#include "host/WidgetDisplay.h"
#include "platform/dispatch/Clock.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSPropertyList.h"
#include "players/PlayerScriptRunner.h"
#include "players/ScriptingTargets.h"

namespace Corvella {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

NSBundle resourceBundle() {
  const std::filesystem::path program = QCoreApplication::applicationDirPath().toStdString();
  return NSBundle(program.parent_path() / "share" / "corvella");
}

ScriptingTargets entitledTargets(const NSBundle& bundle) {
  constexpr auto name = "Corvella.entitlements";
  const auto path = bundle.pathForResource(name).string();
  const auto bytes = bundle.dataForResource(name);
  if (!bytes) throw std::runtime_error("cannot read " + path);
  return ScriptingTargets::fromEntitlements(NSPropertyList::propertyListWithData(*bytes, path));
}

/// Everything that the widget's thread works with, put together.
void print(const CommandLine& commandLine) {
  const SteadyClock clock;
  const QtImageDecoder imageDecoder;
  const QtFontFinder fontFinder;
  const QtTextMeasurer textMeasurer;
  const auto bundle = resourceBundle();
  const auto player = selectPlayer(commandLine.player, clock, bundle, std::cerr);
  PlayerScriptRunner runner(*player, entitledTargets(bundle));
  DisplayReader reader({.clock = clock,
                        .scriptRunner = runner,
                        .bundle = bundle,
                        .imageDecoder = imageDecoder,
                        .fontFinder = fontFinder,
                        .textMeasurer = textMeasurer});
  const auto display = reader.read(commandLine.lyrics);
  std::cout << displayText(display);
  if (commandLine.lyrics) std::cout << lyricsText(display);
}

void perform(const CommandLine& commandLine) {
  switch (commandLine.action) {
    case CommandLine::Action::Print:
      return print(commandLine);
    case CommandLine::Action::ListPlayers:
      return listPlayers(std::cout, std::cerr);
    case CommandLine::Action::Help:
      std::cout << usageText();
      return;
    case CommandLine::Action::Version:
      std::cout << "corvella " CORVELLA_VERSION "\n";
      return;
  }
}

/// Qt's warnings are about its own surroundings and mean nothing to a user of `--print`.
void showOnlyGraveMessages(QtMsgType type, const QMessageLogContext& /*context*/,
                           const QString& message) {
  if (type == QtCriticalMsg || type == QtFatalMsg) std::cerr << message.toStdString() << "\n";
}

int run(const std::vector<std::string>& arguments) {
  const auto parsed = parseCommandLine(arguments);
  if (const auto* error = std::get_if<UsageError>(&parsed)) {
    std::cerr << "corvella: " << error->message << "\n\n" << usageText();
    return kWrongUsage;
  }
  try {
    perform(std::get<CommandLine>(parsed));
    std::cout.flush();
    if (!std::cout) throw std::runtime_error("cannot write to standard output");
    return 0;
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
  qputenv("QT_QPA_PLATFORM", "offscreen");  // There is no window yet.
  const QGuiApplication application(argc, argv);
  return Corvella::run({argv + (argc > 0 ? 1 : 0), argv + argc});
}
