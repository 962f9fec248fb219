#include "host/program/CommandLine.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <optional>
#include <utility>

namespace Corvella {

namespace {

using Action = CommandLine::Action;

constexpr double kSmallestScale = 0.5;
constexpr double kLargestScale = 4;

/// The program's options, as the parser needs them.
struct Options {
  QCommandLineOption player{"player", "Which player to show: auto, embedded, or a player's name.",
                            "auto|embedded|NAME", "auto"};
  QCommandLineOption toggle{"toggle", "Show or hide the Today view."};
  QCommandLineOption hidden{"hidden", "Start without showing the Today view."};
  QCommandLineOption listPlayers{"list-players", "List the players that can be shown."};
  QCommandLineOption print{"print", "Print what the widget shows, once, and end."};
  QCommandLineOption json{"json", "Print one JSON object."};
  QCommandLineOption follow{"follow", "Print again at each change."};
  QCommandLineOption snapshot{"snapshot", "Draw the Today view into a file.", "FILE.png"};
  QCommandLineOption lyrics{"lyrics", "Unfold the lyrics, too."};
  QCommandLineOption scale{"scale", "Pixels of the snapshot to each point.", "N", "1"};
  QCommandLineOption help{{"h", "help"}, "Show this help."};
  QCommandLineOption version{{"v", "version"}, "Show the version."};

  void addTo(QCommandLineParser& parser) const {
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsCompactedShortOptions);
    parser.addOptions({player, toggle, hidden, listPlayers, print, json, follow, snapshot, lyrics,
                       scale, help, version});
  }
};

/// Says what is wrong with options that are right one by one; empty when nothing is.
std::string usageErrorIn(const QCommandLineParser& parser, const Options& options, double scale) {
  if (!parser.positionalArguments().isEmpty()) {
    const auto first = parser.positionalArguments().constFirst();
    return "Unexpected argument '" + first.toStdString() + "'.";
  }
  const bool print = parser.isSet(options.print);
  const bool snapshot = parser.isSet(options.snapshot);
  if (print + snapshot + parser.isSet(options.toggle) + parser.isSet(options.listPlayers) > 1) {
    return "Only one of --print, --snapshot, --toggle and --list-players can be followed.";
  }
  const bool opens =
      !print && !snapshot && !parser.isSet(options.toggle) && !parser.isSet(options.listPlayers);
  if (parser.isSet(options.hidden) && !opens) return "--hidden goes with no other command.";
  if (parser.isSet(options.lyrics) && !print && !snapshot) {
    return "--lyrics goes with --print or --snapshot.";
  }
  if (parser.isSet(options.json) && !print) return "--json goes with --print.";
  if (parser.isSet(options.follow) && !print) return "--follow goes with --print.";
  if (parser.isSet(options.scale) && !snapshot) return "--scale goes with --snapshot.";
  if (!(scale >= kSmallestScale && scale <= kLargestScale)) {
    return "--scale needs a number from 0.5 to 4.";
  }
  if (parser.value(options.player).isEmpty()) return "--player needs a name.";
  if (snapshot && parser.value(options.snapshot).isEmpty()) return "--snapshot needs a file.";
  return {};
}

Action actionOf(const QCommandLineParser& parser, const Options& options) {
  if (parser.isSet(options.listPlayers)) return Action::ListPlayers;
  if (parser.isSet(options.print)) return Action::Print;
  if (parser.isSet(options.snapshot)) return Action::Snapshot;
  return parser.isSet(options.toggle) ? Action::Toggle : Action::Open;
}

std::optional<Action> informationOf(const QCommandLineParser& parser, const Options& options) {
  if (parser.isSet(options.help)) return Action::Help;
  if (parser.isSet(options.version)) return Action::Version;
  return std::nullopt;
}

}  // namespace

std::variant<CommandLine, UsageError> parseCommandLine(const std::vector<std::string>& arguments) {
  QStringList words{"corvella"};
  for (const auto& argument : arguments) words << QString::fromStdString(argument);

  const Options options;
  QCommandLineParser parser;
  options.addTo(parser);
  if (!parser.parse(words)) return UsageError{parser.errorText().toStdString()};
  if (const auto information = informationOf(parser, options)) {
    return CommandLine{.action = *information};
  }
  bool isNumber = false;
  const auto number = parser.value(options.scale).toDouble(&isNumber);
  const auto scale = isNumber ? number : 0;
  if (auto message = usageErrorIn(parser, options, scale); !message.empty()) {
    return UsageError{std::move(message)};
  }
  return CommandLine{.action = actionOf(parser, options),
                     .lyrics = parser.isSet(options.lyrics),
                     .json = parser.isSet(options.json),
                     .follow = parser.isSet(options.follow),
                     .hidden = parser.isSet(options.hidden),
                     .playerIsGiven = parser.isSet(options.player),
                     .player = parser.value(options.player).toStdString(),
                     .file = parser.value(options.snapshot).toStdString(),
                     .scale = scale};
}

std::string usageText() {
  return
      R"(Usage: corvella [OPTION...]
Shows what a music player is playing: opens the Today view on the desktop, or
that of the corvella which runs already.

  --player auto|embedded|NAME  the player to show: NAME is that of a player on the
                               session bus (see --list-players), embedded is the
                               built-in one; auto (the default) is whichever plays
                               on the session bus, or embedded where there is no bus
  --toggle                     show the Today view, or hide the one that is shown
  --hidden                     start without showing the Today view, for example when
                               the desktop starts
  --list-players               list the players that can be shown, and end
  --print                      print what the widget shows, once, and end
  --json                       with --print: print one JSON object on one line, with
                               the keys title, artist, album, state, position and
                               length (seconds), rating and volume (0 to 100) and
                               player, and lyrics with --lyrics
  --follow                     with --print: print again at each change but that of
                               the position, until interrupted
  --snapshot FILE.png          draw the Today view into a file, and end; needs no
                               display
  --lyrics                     with --print or --snapshot: unfold the lyrics;
                               --print then prints them whole
  --scale N                    with --snapshot: pixels to each point, from 0.5 to 4
  -h, --help                   show this help
  -v, --version                show the version

Keys in the Today view: Space plays and pauses, P and N change the track, 0 to 5
set the stars, Up and Down the volume, L shows the lyrics, S chooses the player,
Esc hides the view.
)";
}

}  // namespace Corvella
