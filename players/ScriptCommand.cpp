#include "players/ScriptCommand.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <system_error>

#include "players/AsciiText.h"
#include "players/ScriptTokens.h"

namespace Corvella {

namespace {

using Kind = ScriptToken::Kind;

struct Phrase {
  std::string_view words;
  ScriptVerb verb;
  bool takesNumber = false;  ///< After the words.
};

constexpr std::array kPhrases{
    Phrase{"running", ScriptVerb::Running},
    Phrase{"get player state as string", ScriptVerb::GetPlayerState},
    Phrase{"get (name, artist, album, lyrics, rating, finish) of current track",
           ScriptVerb::GetSongInfo},
    Phrase{"tell artwork 1 of the current track to raw data", ScriptVerb::GetArtwork},
    Phrase{"get lyrics of current track", ScriptVerb::GetLyrics},
    Phrase{"player position", ScriptVerb::GetPlayerPosition},
    Phrase{"get rating", ScriptVerb::GetRating},
    Phrase{"get sound volume", ScriptVerb::GetSoundVolume},
    Phrase{"set rating of current track to", ScriptVerb::SetRating, true},
    Phrase{"set sound volume to", ScriptVerb::SetSoundVolume, true},
    Phrase{"play", ScriptVerb::Play},
    Phrase{"pause", ScriptVerb::Pause},
    Phrase{"previous track", ScriptVerb::PreviousTrack},
    Phrase{"next track", ScriptVerb::NextTrack},
};

bool sameToken(const ScriptToken& left, const ScriptToken& right) {
  return left.kind == right.kind && sameText(left.text, right.text);
}

std::string unescaped(std::string_view quoted) {
  std::string text;
  text.reserve(quoted.size());
  for (std::size_t i = 0; i < quoted.size(); ++i) {
    if (quoted[i] == '\\' && i + 1 < quoted.size()) ++i;
    text += quoted[i];
  }
  return text;
}

bool isWellFormed(std::string_view command) {
  ScriptTokens tokens(command);
  int open = 0;
  for (auto token = tokens.next(); token.kind != Kind::End; token = tokens.next()) {
    if (token.kind == Kind::Malformed) return false;
    if (token.kind != Kind::Symbol) continue;
    if (token.text == "(") ++open;
    if (token.text == ")" && --open < 0) return false;
  }
  return open == 0;
}

std::optional<std::int64_t> wholeNumber(const ScriptToken& token) {
  std::int64_t number = 0;
  const char* const end = token.text.data() + token.text.size();
  const auto [stop, error] = std::from_chars(token.text.data(), end, number);
  if (token.kind != Kind::Number || stop != end || error != std::errc()) return std::nullopt;
  return number;
}

enum class Match : std::uint8_t { None, EndsTooEarly, WrongNumber, Full };

Match match(const Phrase& phrase, std::string_view command, std::int64_t& number) {
  ScriptTokens expected(phrase.words);
  ScriptTokens given(command);
  for (auto word = expected.next(); word.kind != Kind::End; word = expected.next()) {
    const auto token = given.next();
    if (token.kind == Kind::End) return Match::EndsTooEarly;
    if (!sameToken(word, token)) return Match::None;
  }
  if (phrase.takesNumber) {
    const auto token = given.next();
    if (token.kind == Kind::End) return Match::EndsTooEarly;
    const auto value = wholeNumber(token);
    if (!value) return Match::WrongNumber;
    number = *value;
  }
  return given.next().kind == Kind::End ? Match::Full : Match::None;
}

std::variant<ScriptCommand, ScriptTextError> parseCommand(std::string application,
                                                          std::string_view command) {
  constexpr auto kSyntax = ScriptTextError::Kind::Syntax;
  if (!isWellFormed(command)) return ScriptTextError{kSyntax, "Unreadable command.", application};

  std::string problem;
  for (const auto& phrase : kPhrases) {
    ScriptCommand parsed{.application = {}, .verb = phrase.verb, .number = 0};
    switch (match(phrase, command, parsed.number)) {
      case Match::Full:
        parsed.application = std::move(application);
        return parsed;
      case Match::EndsTooEarly:
        problem = "The command ends too early.";
        break;
      case Match::WrongNumber:
        problem = "Expected a whole number.";
        break;
      case Match::None:
        break;
    }
  }
  if (!problem.empty()) return ScriptTextError{kSyntax, problem, std::move(application)};
  return ScriptTextError{ScriptTextError::Kind::UnknownCommand, "The command is not understood.",
                         std::move(application)};
}

}  // namespace

std::variant<ScriptCommand, ScriptTextError> parseScript(std::string_view source) {
  constexpr auto kSyntax = ScriptTextError::Kind::Syntax;
  ScriptTokens tokens(source);
  const auto word = [&tokens](std::string_view expected) {
    return sameToken(tokens.next(), {Kind::Word, expected});
  };

  if (!word("tell") || !word("app")) return ScriptTextError{kSyntax, "Expected \"tell app\".", {}};
  const auto name = tokens.next();
  if (name.kind != Kind::String) {
    return ScriptTextError{kSyntax, "Expected the application's name.", {}};
  }
  std::string application = unescaped(name.text);
  if (!word("to")) return ScriptTextError{kSyntax, "Expected \"to\".", std::move(application)};
  return parseCommand(std::move(application), tokens.rest());
}

}  // namespace Corvella
