#include <cstdint>
#include <string>
#include <variant>

#include <gtest/gtest.h>

#include "players/ScriptCommand.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

std::string script(const std::string& command) {
  return "tell app \"iTunes\" to " + command;
}

TEST(AScript, MayVaryInCaseBlanksAndName) {
  const auto parsed = parseScript("  TELL\tapp  \"Say \\\"Hi\\\"\"  To SET sound   volume to -9 ");
  ASSERT_TRUE(std::holds_alternative<ScriptCommand>(parsed));
  EXPECT_EQ(std::get<ScriptCommand>(parsed).application, "Say \"Hi\"");
  EXPECT_EQ(std::get<ScriptCommand>(parsed).verb, ScriptVerb::SetSoundVolume);
  EXPECT_EQ(std::get<ScriptCommand>(parsed).number, -9);
}

TEST(ANumber, MayUseItsWholeRange) {
  const auto parsed = parseScript(script("set rating of current track to -9223372036854775808"));
  ASSERT_TRUE(std::holds_alternative<ScriptCommand>(parsed));
  EXPECT_EQ(std::get<ScriptCommand>(parsed).number, INT64_MIN);
}

struct ErrorRow {
  std::string name;
  std::string text;
  ScriptTextError::Kind kind;
};

class ABadText : public testing::TestWithParam<ErrorRow> {};

TEST_P(ABadText, IsToldFromACommandThatNobodyKnows) {
  // A copy without anything behind it, so that a read too far is found.
  const std::vector<char> exact(GetParam().text.begin(), GetParam().text.end());
  const auto parsed = parseScript(std::string_view(exact.data(), exact.size()));
  ASSERT_TRUE(std::holds_alternative<ScriptTextError>(parsed));
  EXPECT_EQ(std::get<ScriptTextError>(parsed).kind, GetParam().kind);
  EXPECT_FALSE(std::get<ScriptTextError>(parsed).message.empty());
}

constexpr auto kSyntax = ScriptTextError::Kind::Syntax;
constexpr auto kUnknown = ScriptTextError::Kind::UnknownCommand;

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, ABadText,
    testing::Values(
        ErrorRow{"Empty", "", kSyntax}, ErrorRow{"BareCommand", "play", kSyntax},
        ErrorRow{"NoApplication", "tell", kSyntax}, ErrorRow{"NoName", "tell app to play", kSyntax},
        ErrorRow{"NameNotClosed", "tell app \"iTunes to play", kSyntax},
        ErrorRow{"NameEndsInEscape", "tell app \"iTunes\\", kSyntax},
        ErrorRow{"NoTo", "tell app \"iTunes\" play", kSyntax},
        ErrorRow{"NoCommand", script(""), kSyntax},
        ErrorRow{"CutShort", script("get player state as"), kSyntax},
        ErrorRow{"NoNumber", script("set sound volume to"), kSyntax},
        ErrorRow{"WordForANumber", script("set sound volume to loud"), kSyntax},
        ErrorRow{"NumberTooLarge", script("set sound volume to 9223372036854775808"), kSyntax},
        ErrorRow{"MinusAlone", script("set sound volume to -"), kSyntax},
        ErrorRow{"OpenParenthesis", script("get (name"), kSyntax},
        ErrorRow{"ClosedParenthesis", script("play )("), kSyntax},
        ErrorRow{"StrangeSign", script("play ;"), kSyntax},
        ErrorRow{"ZeroByte", script("play") + '\0', kSyntax},
        ErrorRow{"SecondLine", script("play\nquit"), kSyntax},
        ErrorRow{"UnknownWord", script("dance"), kUnknown},
        ErrorRow{"OtherProperty", script("get genre of current track"), kUnknown},
        ErrorRow{"WordTooMany", script("play again"), kUnknown},
        ErrorRow{"NumberTooMany", script("set sound volume to 5 6"), kUnknown},
        ErrorRow{"WordsRunTogether", script("playpause"), kUnknown},
        ErrorRow{"PropertiesInAnotherOrder",
                 script("get (artist, name, album, lyrics, rating, finish) of current track"),
                 kUnknown}),
    rowName);

}  // namespace
}  // namespace Corvella
