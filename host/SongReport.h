#pragma once

#include <string>

#include "model/SongController.h"

namespace Corvella {

/// Asks the controller everything that it can tell and writes it down, one `name: value` a line.
std::string songReport(const SongController& controller);

}  // namespace Corvella
