#include "host/program/CommandLine.h"

#include <QChar>
#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "host/program/Options.h"

namespace Corvella {

namespace {

using Action = CommandLine::Action;

constexpr double kSmallestScale = 0.5;
constexpr double kLargestScale = 4;

/// The options of the table as Qt's parser takes them.
QList<QCommandLineOption> parserOptions() {
  const auto text = [](std::string_view view) {
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
  };
  QList<QCommandLineOption> result;
  for (const auto& option : options::kAll) {
    QStringList names{text(option.name)};
    if (option.letter != '\0') names << QString(QChar(option.letter));
    result << QCommandLineOption(names, text(option.help), text(option.argument));
  }
  return result;
}

/// The options that were given, by the names in the table.
class GivenOptions {
 public:
  explicit GivenOptions(const QCommandLineParser& parser) : parser_(parser) {}

  bool has(const Option& option) const { return parser_.isSet(nameOf(option)); }
  /// Empty when the option was not given.
  std::string value(const Option& option) const {
    return parser_.value(nameOf(option)).toStdString();
  }

 private:
  static QString nameOf(const Option& option) {
    return QString::fromLatin1(option.name.data(), static_cast<qsizetype>(option.name.size()));
  }

  const QCommandLineParser& parser_;
};

/// The option that is a command of its own; "open" when there is none.
struct Command {
  const Option& option;
  Action action;
};
const std::array kCommands{Command{options::kToggle, Action::Toggle},
                           Command{options::kQuit, Action::Quit},
                           Command{options::kAutostart, Action::Autostart},
                           Command{options::kListPlayers, Action::ListPlayers},
                           Command{options::kPrint, Action::Print},
                           Command{options::kSnapshot, Action::Snapshot}};

Action actionOf(const GivenOptions& given) {
  for (const auto& [option, action] : kCommands) {
    if (given.has(option)) return action;
  }
  return Action::Open;
}

/// Options that mean something to some commands only.
struct Companion {
  const Option& option;
  std::vector<Action> commands;
  std::string_view goesWith;
};

/// Says what is wrong with options that are right one by one; empty when nothing is.
std::string usageErrorIn(const GivenOptions& given, double scale) {
  const auto isGiven = [&given](const Command& command) { return given.has(command.option); };
  if (std::ranges::count_if(kCommands, isGiven) > 1) {
    std::string names;
    for (const auto& [option, action] : kCommands) {
      if (!names.empty()) names += action == kCommands.back().action ? " and " : ", ";
      names.append("--").append(option.name);
    }
    return "Only one of " + names + " can be followed.";
  }
  const std::vector<Companion> companions{
      {options::kHidden, {Action::Open}, "no other command"},
      {options::kLyrics, {Action::Print, Action::Snapshot}, "--print or --snapshot"},
      {options::kJson, {Action::Print}, "--print"},
      {options::kFollow, {Action::Print}, "--print"},
      {options::kScale, {Action::Snapshot}, "--snapshot"}};
  for (const auto& [option, commands, goesWith] : companions) {
    if (!given.has(option) || std::ranges::count(commands, actionOf(given)) > 0) continue;
    return std::string("--").append(option.name).append(" goes with ").append(goesWith) + ".";
  }
  if (!(scale >= kSmallestScale && scale <= kLargestScale)) {
    return "--scale needs a number from 0.5 to 4.";
  }
  if (given.has(options::kPlayer) && given.value(options::kPlayer).empty()) {
    return "--player needs a name.";
  }
  if (given.has(options::kSnapshot) && given.value(options::kSnapshot).empty()) {
    return "--snapshot needs a file.";
  }
  const auto autostart = given.value(options::kAutostart);
  if (given.has(options::kAutostart) && autostart != "on" && autostart != "off") {
    return "--autostart needs on or off.";
  }
  return {};
}

/// An error of one line, although it may repeat an argument that has several.
UsageError usageError(const QString& message) {
  return {message.simplified().toStdString()};
}

std::optional<Action> informationOf(const GivenOptions& given) {
  if (given.has(options::kHelp)) return Action::Help;
  if (given.has(options::kVersion)) return Action::Version;
  return std::nullopt;
}

double scaleOf(const GivenOptions& given) {
  if (!given.has(options::kScale)) return 1;
  bool isNumber = false;
  const auto number = QString::fromStdString(given.value(options::kScale)).toDouble(&isNumber);
  return isNumber ? number : 0;
}

}  // namespace

std::variant<CommandLine, UsageError> parseCommandLine(const std::vector<std::string>& arguments) {
  QStringList words{"corvella"};
  for (const auto& argument : arguments) words << QString::fromStdString(argument);

  QCommandLineParser parser;
  parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsCompactedShortOptions);
  parser.addOptions(parserOptions());
  if (!parser.parse(words)) return usageError(parser.errorText());
  const GivenOptions given(parser);
  if (const auto information = informationOf(given)) return CommandLine{.action = *information};
  if (!parser.positionalArguments().isEmpty()) {
    return usageError("Unexpected argument '" + parser.positionalArguments().constFirst() + "'.");
  }
  const auto scale = scaleOf(given);
  if (auto message = usageErrorIn(given, scale); !message.empty()) {
    return UsageError{std::move(message)};
  }
  CommandLine result{.action = actionOf(given),
                     .lyrics = given.has(options::kLyrics),
                     .json = given.has(options::kJson),
                     .follow = given.has(options::kFollow),
                     .hidden = given.has(options::kHidden),
                     .autostart = given.value(options::kAutostart) == "on",
                     .playerIsGiven = given.has(options::kPlayer),
                     .file = given.value(options::kSnapshot),
                     .scale = scale};
  if (result.playerIsGiven) result.player = given.value(options::kPlayer);
  return result;
}

}  // namespace Corvella
