#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "host/program/Autostart.h"
#include "host/program/CommandLine.h"
#include "host/program/HelpTexts.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using Action = CommandLine::Action;
using Arguments = std::vector<std::string>;

TEST(ACommandLine, TellsWhatToDoAndWithWhichPlayer) {
  struct Row {
    Arguments arguments;
    Action action;
    std::string player;
  };
  const std::vector<Row> rows{
      {{}, Action::Open, "auto"},
      {{"--toggle"}, Action::Toggle, "auto"},
      {{"--print", "--player", "embedded"}, Action::Print, "embedded"},
      {{"--player=vlc.instance7"}, Action::Open, "vlc.instance7"},
      {{"--quit"}, Action::Quit, "auto"},
      {{"--list-players"}, Action::ListPlayers, "auto"},
      {{"--print", "--help"}, Action::Help, "auto"},
      {{"-v"}, Action::Version, "auto"},
  };
  for (const auto& row : rows) {
    const auto parsed = std::get<CommandLine>(parseCommandLine(row.arguments));
    EXPECT_EQ(parsed.action, row.action) << testing::PrintToString(row.arguments);
    EXPECT_EQ(parsed.player, row.player);
  }
  for (const bool on : {true, false}) {
    const auto parsed = std::get<CommandLine>(parseCommandLine({"--autostart", on ? "on" : "off"}));
    EXPECT_EQ(parsed.action, Action::Autostart);
    EXPECT_EQ(parsed.autostart, on);
  }
  const auto snapshot =
      std::get<CommandLine>(parseCommandLine({"--snapshot", "a.png", "--lyrics", "--scale=1.5"}));
  EXPECT_EQ(snapshot.action, Action::Snapshot);
  EXPECT_EQ(snapshot.file, "a.png");
  EXPECT_TRUE(snapshot.lyrics);
  EXPECT_EQ(snapshot.scale, 1.5);
}

TEST(AWrongCommandLine, IsRefusedWithTheWordThatIsWrong) {
  const std::vector<std::pair<Arguments, std::string>> rows{
      {{"--shiny"}, "shiny"},
      {{"-x"}, "x"},
      {{"-a"}, "a"},
      {{"song.mp3"}, "song.mp3"},
      {{"a\nsong"}, "a song"},
      {{"--a\nsong"}, "a song"},
      {{"--player"}, "player"},
      {{"--player="}, "player"},
      {{"--print=yes"}, "print"},
      {{"--lyrics"}, "lyrics"},
      {{"--scale", "2"}, "scale"},
      {{"--snapshot"}, "snapshot"},
      {{"--snapshot="}, "snapshot"},
      {{"--print", "--toggle"}, "toggle"},
      {{"--print", "--hidden"}, "hidden"},
      {{"--json"}, "json"},
      {{"--autostart"}, "autostart"},
      {{"--autostart", "maybe"}, "on or off"},
      {{"--autostart", "on", "--quit"}, "quit"},
      {{"--toggle", "--follow"}, "follow"},
      {{"--print", "--snapshot", "a.png"}, "snapshot"},
      {{"--snapshot", "a.png", "--scale", "4.1"}, "0.5"},
      {{"--snapshot", "a.png", "--scale", "nan"}, "0.5"},
      {{"--snapshot", "a.png", "--scale", "big"}, "0.5"}};
  for (const auto& [arguments, word] : rows) {
    const auto error = std::get<UsageError>(parseCommandLine(arguments));
    EXPECT_THAT(error.message, testing::HasSubstr(word));
  }
}

TEST(AnAutostartEntry, StartsTheProgramWhateverItsPathAndThePlayersNameHold) {
  EXPECT_EQ(autostartEntry("/usr/bin/corvella", ""),
            "[Desktop Entry]\nType=Application\nName=Corvella\n"
            "Comment=Shows what a music player is playing, and drives it\nIcon=corvella\n"
            "TryExec=/usr/bin/corvella\nExec=\"/usr/bin/corvella\" --hidden\n"
            "Terminal=false\nX-GNOME-Autostart-enabled=true\n");
  const auto odd = autostartEntry("/a b/100%/corvella", "\"$\\\n");
  EXPECT_THAT(odd, testing::HasSubstr("\nTryExec=/a b/100%/corvella\n"));
  EXPECT_THAT(odd, testing::HasSubstr("\nExec=\"/a b/100%%/corvella\" --hidden --player "
                                      "\"\\\\\"\\\\$\\\\\\\\\\n\"\n"));
}

TEST(TheManualPage, SetsTheNamesOfOptionsInBoldAndNothingElse) {
  std::istringstream page(manualPage("1.0"));
  std::vector<std::string> lines;
  for (std::string line; std::getline(page, line);) lines.push_back(line);
  for (const auto* const line :
       {"start without showing the panel, for example when the desktop starts",
        "\\fB\\-\\-snapshot\\fR FILE.png",
        "with \\fB\\-\\-print\\fR: print again at each change but that of the position, until "
        "interrupted"}) {
    EXPECT_THAT(lines, testing::Contains(std::string(line)));
  }
}

TEST(BashCompletion, OffersOptionsPlayersAndWords) {
  const TemporaryFolder folder;
  const auto completion = folder.write("corvella.bash", bashCompletion());
  folder.write("my picture.png", "");
  const std::vector<std::pair<std::string, std::string>> rows{
      {"--pl", "--player"},
      {"--player e", "embedded"},
      {"--player = a", "auto"},
      {"--autostart o", "on off"},
      {"--scale 2", ""},
      {"--nothing", ""},
      {"--snapshot " + (folder.path() / "my").string(),
       (folder.path() / "my picture.png").string()},
      {"--h", "--hidden --help"}};
  for (const auto& [words, offered] : rows) {
    Process bash(
        {"bash", "-c",
         "corvella() { echo 'embedded (built in)'; }; source " + completion.string() +
             "; COMP_WORDS=(corvella " + words +
             "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _corvella; echo \"${COMPREPLY[*]}\""});
    EXPECT_EQ(bash.wait(), 0);
    EXPECT_EQ(bash.output(), offered + "\n") << words;
    EXPECT_EQ(bash.errors(), "") << words;
  }
}

}  // namespace
}  // namespace Corvella
