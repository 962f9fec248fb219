#pragma once

#include <string>
#include <string_view>

namespace Corvella {

/// How the program is used, with each option and key, in lines of at most 80 columns; ends in a
/// line feed.
std::string usageText();

/// The manual page corvella(1), in the man macros of troff.
std::string manualPage(std::string_view version);

/// What completes the program's options in a shell; each is a file for that shell's folder of
/// completions. They ask the program itself for the names of players.
std::string bashCompletion();
std::string zshCompletion();
std::string fishCompletion();

}  // namespace Corvella
