#pragma once

#include <filesystem>

#include "players/PlayerModule.h"

namespace Corvella {

/// Loads a module of players; once loaded it stays. Any thread. Throws `std::runtime_error` with
/// the reason when it cannot be loaded.
const PlayerModule& loadPlayerModule(const std::filesystem::path& path);

}  // namespace Corvella
