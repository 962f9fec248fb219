#include "host/program/HelpTexts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <utility>

#include "host/program/Options.h"

namespace Corvella {

namespace {

using Values = Option::Values;

constexpr std::string_view kIntroduction =
    "Shows what a music player is playing: opens a panel on the desktop, or that of the corvella "
    "which runs already.";

constexpr std::string_view kColumnsOfHelp = "                               ";
constexpr std::size_t kWidth = 80;

/// "--player auto|embedded|NAME", "-h, --help"
std::string synopsisOf(const Option& option) {
  std::string text;
  if (option.letter != '\0') text.append("-").append(1, option.letter).append(", ");
  text.append("--").append(option.name);
  if (!option.argument.empty()) text.append(" ").append(option.argument);
  return text;
}

/// The words of `text` in lines of at most `kWidth` columns, of which the first follows what stands
/// in `start`, and the others what stands in `indent`.
std::string wrapped(std::string start, std::string_view indent, std::string_view text) {
  std::string result;
  auto line = std::move(start);
  bool isFirstWord = true;
  while (!text.empty()) {
    const auto end = std::min(text.find(' '), text.size());
    if (!isFirstWord && line.size() + 1 + end > kWidth) {
      result.append(line).append("\n");
      line = indent;
      isFirstWord = true;
    }
    if (!isFirstWord) line += ' ';
    line.append(text.substr(0, end));
    isFirstWord = false;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return result.append(line).append("\n");
}

/// `text` as troff prints it, with the names of options in bold. It must not begin with a dot.
std::string troff(std::string_view text) {
  std::string result;
  bool isBold = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (text.substr(at).starts_with("--") && !isBold) {
      result += "\\fB";
      isBold = true;
    } else if (isBold && c != '-' && std::isalpha(static_cast<unsigned char>(c)) == 0) {
      result += "\\fR";
      isBold = false;
    }
    if (c == '-' || c == '\\') result += '\\';
    result += c;
  }
  return isBold ? result + "\\fR" : result;
}

/// What completes an argument, in the words of each shell.
struct Completion {
  Values values;
  std::string_view bash;
  std::string_view zsh;
  std::string_view fish;
};

constexpr std::array kCompletions{
    Completion{Values::None, ":", " ", ""}, Completion{Values::Any, ":", " ", " -x"},
    Completion{Values::Players,
               R"sh(COMPREPLY=($(compgen -W "auto $(_corvella_players)" -- "$cur")))sh",
               "_corvella_players", " -x -a 'auto (__corvella_players)'"},
    Completion{
        Values::PngFile,
        R"(mapfile -t COMPREPLY < <(compgen -f -- "$cur"); compopt -o filenames 2>/dev/null)",
        R"(_files -g "*.png")", " -r -F"},
    Completion{Values::OnOff, R"(COMPREPLY=($(compgen -W 'on off' -- "$cur")))", "(on off)",
               " -x -a 'on off'"}};

const Completion& completionOf(const Option& option) {
  return *std::ranges::find(kCompletions, option.values, &Completion::values);
}

/// Prints the names that --player takes besides auto: each line of --list-players begins with one.
constexpr std::string_view kListNames = "corvella --list-players 2>/dev/null | cut -d' ' -f1";

}  // namespace

std::string usageText() {
  std::string text = "Usage: corvella [OPTION...]\n" + wrapped("", "", kIntroduction) + "\n";
  for (const auto& option : options::kAll) {
    auto start = "  " + synopsisOf(option);
    start.resize(std::max(start.size() + 2, kColumnsOfHelp.size()), ' ');
    text += wrapped(std::move(start), kColumnsOfHelp, option.help);
  }
  text += "\nKeys of the panel:\n";
  for (const auto& [key, does] : kKeyHelp) {
    auto start = std::string("  ").append(key);
    start.resize(kColumnsOfHelp.size(), ' ');
    text += wrapped(std::move(start), kColumnsOfHelp, does);
  }
  return text;
}

std::string manualPage(std::string_view version) {
  std::string page;
  const auto add = [&page](auto... parts) { (page.append(parts), ...).append("\n"); };
  add(R"(.TH CORVELLA 1 "" "corvella )", version, R"(" "User Commands")");
  add(".SH NAME");
  add("corvella \\- a now\\-playing widget for the desktop");
  add(".SH SYNOPSIS");
  add(".B corvella");
  add("[\\fIOPTION\\fR...]");
  add(".SH DESCRIPTION");
  add(troff(kIntroduction));
  add("It shows the title, artist, album, artwork, stars, volume and position of a track, drives "
      "the "
      "player, and unfolds the lyrics.");
  add("Any player that speaks MPRIS on the session bus can be shown.");
  add("Without a display the program draws the panel into a picture, says where, and prints what "
      "the "
      "panel shows.");
  add(".SH OPTIONS");
  for (const auto& option : options::kAll) {
    add(".TP");
    add(troff(synopsisOf(option)));
    add(troff(option.help));
  }
  add(".SH KEYS");
  for (const auto& [key, does] : kKeyHelp) {
    add(".TP");
    add(troff(key));
    add(troff(does));
  }
  add(".SH D-BUS");
  add("The program owns the name \\fBorg.corvella.Corvella\\fR on the session bus.");
  add("The object \\fB/org/corvella/Corvella\\fR has the methods \\fBOpen\\fR, \\fBToggle\\fR, "
      "\\fBShowPlayer\\fR (a string, as for \\fB\\-\\-player\\fR) and \\fBQuit\\fR.");
  add("Where the program is installed, a call starts it.");
  add(".SH EXIT STATUS");
  add(".TP\n0\nThe program did what was asked.");
  add(".TP\n1\nIt could not; a message on standard error says why. \\fB\\-\\-print\\fR (without "
      "\\fB\\-\\-follow\\fR) and \\fB\\-\\-snapshot\\fR also end so when the player that is named "
      "is "
      "not there or does not answer.");
  add(".TP\n2\nThe command line is wrong.");
  add(".SH ENVIRONMENT");
  add(".TP\n.B DBUS_SESSION_BUS_ADDRESS\nwhere the players are");
  add(".TP\n.B DISPLAY\\fR, \\fBWAYLAND_DISPLAY\nwhere the panel is shown");
  add(".TP\n.B QT_QPA_PLATFORM\nhow Qt shows it, for example \\fBxcb\\fR on a Wayland desktop");
  add(".SH FILES");
  add(".TP\n.I $XDG_CONFIG_HOME/autostart/corvella.desktop\nwritten by ", troff("--autostart on"),
      "; $XDG_CONFIG_HOME is ~/.config where it is not set");
  add(".SH SEE ALSO");
  add(".BR playerctl (1)");
  return page;
}

std::string bashCompletion() {
  std::string options;
  std::string arguments;
  for (const auto& option : options::kAll) {
    options.append(options.empty() ? "" : " ").append("--").append(option.name);
    if (option.letter != '\0') options.append(" -").append(1, option.letter);
    if (option.values == Values::None) continue;
    arguments.append("    --").append(option.name).append(") ");
    arguments.append(completionOf(option).bash).append("; return ;;\n");
  }
  return std::string("# Completion of corvella for bash.\n\n_corvella_players() {\n  ")
      .append(kListNames)
      .append(
          "\n}\n\n_corvella() {\n"
          "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
          "  # bash takes the = of --player=NAME for a word of its own.\n"
          "  [[ $cur == = ]] && cur=\n"
          "  [[ $prev == = ]] && prev=${COMP_WORDS[COMP_CWORD-2]}\n"
          "  COMPREPLY=()\n  case $prev in\n")
      .append(arguments)
      .append("  esac\n  COMPREPLY=($(compgen -W '")
      .append(options)
      .append("' -- \"$cur\"))\n}\n\ncomplete -F _corvella corvella\n");
}

std::string zshCompletion() {
  std::string text =
      "#compdef corvella\n# Completion of corvella for zsh.\n\n_corvella_players() {\n"
      "  local -a players\n  players=(auto ${(f)\"$(";
  text.append(kListNames).append(")\"})\n  compadd -a players\n}\n\n_arguments");
  for (const auto& option : options::kAll) {
    if (option.letter != '\0') {
      text.append(" \\\n  '-").append(1, option.letter).append("[");
      text.append(option.summary).append("]'");
    }
    text.append(" \\\n  '--").append(option.name);
    if (option.values != Values::None) text.append("=");
    text.append("[").append(option.summary).append("]");
    if (option.values != Values::None) {
      text.append(":").append(option.argument).append(":").append(completionOf(option).zsh);
    }
    text.append("'");
  }
  return text.append("\n");
}

std::string fishCompletion() {
  std::string text = "# Completion of corvella for fish.\n\nfunction __corvella_players\n  ";
  text.append(kListNames).append("\nend\n\ncomplete -c corvella -f\n");
  for (const auto& option : options::kAll) {
    text.append("complete -c corvella -l ").append(option.name);
    if (option.letter != '\0') text.append(" -s ").append(1, option.letter);
    text.append(completionOf(option).fish);
    text.append(" -d '").append(option.summary).append("'\n");
  }
  return text;
}

}  // namespace Corvella
