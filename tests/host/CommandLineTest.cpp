#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "host/CommandLine.h"

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
      {{}, Action::Print, "auto"},
      {{"--print"}, Action::Print, "auto"},
      {{"--print", "--player", "embedded"}, Action::Print, "embedded"},
      {{"--player=vlc.instance7"}, Action::Print, "vlc.instance7"},
      {{"--list-players"}, Action::ListPlayers, "auto"},
      {{"--print", "--help"}, Action::Help, "auto"},
      {{"-v"}, Action::Version, "auto"},
  };
  for (const auto& row : rows) {
    const auto parsed = parseCommandLine(row.arguments);
    ASSERT_TRUE(std::holds_alternative<CommandLine>(parsed))
        << testing::PrintToString(row.arguments);
    EXPECT_EQ(std::get<CommandLine>(parsed).action, row.action);
    EXPECT_EQ(std::get<CommandLine>(parsed).player, row.player);
  }
}

TEST(AWrongCommandLine, IsRefusedWithTheWordThatIsWrong) {
  const std::vector<std::pair<Arguments, std::string>> rows{
      {{"--shiny"}, "shiny"},     {{"-x"}, "x"},
      {{"song.mp3"}, "song.mp3"}, {{"--player"}, "player"},
      {{"--player="}, "player"},  {{"--print=yes"}, "print"}};
  for (const auto& [arguments, word] : rows) {
    const auto parsed = parseCommandLine(arguments);
    ASSERT_TRUE(std::holds_alternative<UsageError>(parsed)) << word;
    EXPECT_THAT(std::get<UsageError>(parsed).message, testing::HasSubstr(word));
  }
}

}  // namespace
}  // namespace Corvella
