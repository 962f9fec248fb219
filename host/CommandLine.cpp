#include "host/CommandLine.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>

namespace Corvella {

namespace {

/// The program's options, as the parser needs them.
struct Options {
  QCommandLineOption player{"player", "Which player to show: auto, embedded, or a player's name.",
                            "auto|embedded|NAME", "auto"};
  QCommandLineOption listPlayers{"list-players", "List the players that can be shown."};
  QCommandLineOption print{"print", "Print what the widget shows, once, and end."};
  QCommandLineOption lyrics{"lyrics", "Unfold the lyrics, too."};
  QCommandLineOption help{{"h", "help"}, "Show this help."};
  QCommandLineOption version{{"v", "version"}, "Show the version."};

  void addTo(QCommandLineParser& parser) const {
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsCompactedShortOptions);
    parser.addOptions({player, listPlayers, print, lyrics, help, version});
  }
};

CommandLine::Action actionOf(const QCommandLineParser& parser, const Options& options) {
  if (parser.isSet(options.help)) return CommandLine::Action::Help;
  if (parser.isSet(options.version)) return CommandLine::Action::Version;
  if (parser.isSet(options.listPlayers)) return CommandLine::Action::ListPlayers;
  return CommandLine::Action::Print;
}

}  // namespace

std::variant<CommandLine, UsageError> parseCommandLine(const std::vector<std::string>& arguments) {
  QStringList words{"corvella"};
  for (const auto& argument : arguments) words << QString::fromStdString(argument);

  const Options options;
  QCommandLineParser parser;
  options.addTo(parser);
  if (!parser.parse(words)) return UsageError{parser.errorText().toStdString()};
  if (!parser.positionalArguments().isEmpty()) {
    const auto first = parser.positionalArguments().constFirst();
    return UsageError{"Unexpected argument '" + first.toStdString() + "'."};
  }
  if (parser.value(options.player).isEmpty()) return UsageError{"--player needs a name."};
  return CommandLine{.action = actionOf(parser, options),
                     .lyrics = parser.isSet(options.lyrics),
                     .player = parser.value(options.player).toStdString()};
}

std::string usageText() {
  return
      R"(Usage: corvella [OPTION...]
Shows what a music player is playing.

  --player auto|embedded|NAME  the player to show: NAME is that of a player on the
                               session bus (see --list-players), embedded is the
                               built-in one; auto (the default) is whichever plays
                               on the session bus, or embedded where there is no bus
  --list-players               list the players that can be shown, and end
  --print                      print what the widget shows, once, and end
  --lyrics                     with --print: unfold the lyrics, and print them whole
  -h, --help                   show this help
  -v, --version                show the version
)";
}

}  // namespace Corvella
