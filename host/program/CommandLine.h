#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace Corvella {

/// What the program was asked to do.
struct CommandLine {
  enum class Action : std::uint8_t {
    Open,
    Toggle,
    Quit,
    Autostart,
    ListPlayers,
    Print,
    Snapshot,
    Help,
    Version
  };
  Action action = Action::Open;
  bool lyrics = false;          ///< With the lyrics unfolded.
  bool json = false;            ///< With `Action::Print`: one JSON object instead of lines.
  bool follow = false;          ///< With `Action::Print`: again at each change.
  bool hidden = false;          ///< With `Action::Open`: the Today view stays hidden for now.
  bool autostart = false;       ///< With `Action::Autostart`: whether it is to be on.
  bool playerIsGiven = false;   ///< Whether the user has named one.
  std::string player = "auto";  ///< "auto", "embedded" or the name of a player on the session bus.
  std::string file = {};        ///< Where the snapshot goes.
  double scale = 1;             ///< Pixels of the snapshot to each point, 0.5..4.
};

/// A command line that cannot be followed; `message` is one line.
struct UsageError {
  std::string message;
};

/// Reads the arguments that come after the program's name.
std::variant<CommandLine, UsageError> parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace Corvella
