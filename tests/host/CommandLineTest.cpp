#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "host/program/CommandLine.h"

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
      {{"--list-players"}, Action::ListPlayers, "auto"},
      {{"--print", "--help"}, Action::Help, "auto"},
      {{"-v"}, Action::Version, "auto"},
  };
  for (const auto& row : rows) {
    const auto parsed = std::get<CommandLine>(parseCommandLine(row.arguments));
    EXPECT_EQ(parsed.action, row.action) << testing::PrintToString(row.arguments);
    EXPECT_EQ(parsed.player, row.player);
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
      {{"song.mp3"}, "song.mp3"},
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

}  // namespace
}  // namespace Corvella
