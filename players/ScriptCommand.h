#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace Corvella {

/// What a script asks of an application.
enum class ScriptVerb : std::uint8_t {
  Running,
  GetPlayerState,
  GetSongInfo,
  GetArtwork,
  GetLyrics,
  GetPlayerPosition,
  GetRating,
  GetSoundVolume,
  SetRating,
  SetSoundVolume,
  Play,
  Pause,
  PreviousTrack,
  NextTrack,
};

/// A parsed script: one verb addressed to one application.
struct ScriptCommand {
  std::string application;
  ScriptVerb verb = ScriptVerb::Running;
  std::int64_t number = 0;  ///< The new value, for the two setters.
};

/// Why a text is no script of this system.
struct ScriptTextError {
  enum class Kind : std::uint8_t { Syntax, UnknownCommand };
  Kind kind = Kind::Syntax;
  std::string message;
  std::string application;  ///< Empty when the text breaks before its name.
};

/// Reads `tell app "NAME" to COMMAND`. Words are told apart by blanks and compared without regard
/// to the case of ASCII letters. Never reads beyond `source`, and takes
/// time in proportion to its length.
std::variant<ScriptCommand, ScriptTextError> parseScript(std::string_view source);

}  // namespace Corvella
