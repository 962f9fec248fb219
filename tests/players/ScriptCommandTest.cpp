#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "players/ScriptCommand.h"

namespace Corvella {
namespace {

std::string script(const std::string& command) {
  return "tell app \"iTunes\" to " + command;
}

TEST(AScript, MayVaryInCaseBlanksAndName) {
  const auto parsed = parseScript("  TELL\tapp  \"Say \\\"Hi\\\"\"  To SET sound   volume to -9 ");
  EXPECT_EQ(std::get<ScriptCommand>(parsed).application, "Say \"Hi\"");
  EXPECT_EQ(std::get<ScriptCommand>(parsed).verb, ScriptVerb::SetSoundVolume);
  EXPECT_EQ(std::get<ScriptCommand>(parsed).number, -9);
}

TEST(ANumber, MayUseItsWholeRange) {
  const auto parsed = parseScript(script("set rating of current track to -9223372036854775808"));
  EXPECT_EQ(std::get<ScriptCommand>(parsed).number, INT64_MIN);
}

ScriptTextError::Kind errorIn(const std::string& text) {
  // A copy without anything behind it, so that a read too far is found.
  const std::vector<char> exact(text.begin(), text.end());
  const auto parsed = parseScript(std::string_view(exact.data(), exact.size()));
  EXPECT_FALSE(std::get<ScriptTextError>(parsed).message.empty()) << text;
  return std::get<ScriptTextError>(parsed).kind;
}

TEST(ABadText, IsToldFromACommandThatNobodyKnows) {
  for (const auto* text : {"", "play", "tell", "tell app to play", "tell app \"iTunes to play",
                           "tell app \"iTunes\\", "tell app \"iTunes\" play"}) {
    EXPECT_EQ(errorIn(text), ScriptTextError::Kind::Syntax) << text;
  }
  for (const auto* command :
       {"", "get player state as", "set sound volume to", "set sound volume to loud",
        "set sound volume to 9223372036854775808", "set sound volume to -", "get (name", "play )(",
        "play ;", "play\nquit"}) {
    EXPECT_EQ(errorIn(script(command)), ScriptTextError::Kind::Syntax) << command;
  }
  EXPECT_EQ(errorIn(script("play") + '\0'), ScriptTextError::Kind::Syntax);
  for (const auto* command :
       {"dance", "get genre of current track", "play again", "set sound volume to 5 6", "playpause",
        "get (artist, name, album, lyrics, rating, finish) of current track"}) {
    EXPECT_EQ(errorIn(script(command)), ScriptTextError::Kind::UnknownCommand) << command;
  }
}

}  // namespace
}  // namespace Corvella
