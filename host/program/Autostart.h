#pragma once

#include <filesystem>
#include <string>

#include "host/program/CommandLine.h"

namespace Corvella {

/// The desktop entry that starts `program` without its panel; `player` is what `--player` takes, or
/// empty for none. See the Desktop Entry Specification 1.5, "The Exec key".
std::string autostartEntry(const std::filesystem::path& program, const std::string& player);

/// Writes or removes the entry in the user's own autostart folder, and says so on standard output.
/// Throws `std::runtime_error` when that fails.
void runAutostartCommand(const CommandLine& commandLine);

}  // namespace Corvella
