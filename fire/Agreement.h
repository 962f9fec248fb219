#pragma once

#include <string>

#include "fire/Channel.h"

namespace Corvella {

/// What is wrong with a panel when the players are like this; empty when nothing is. `players` is
/// what `Crowd::state` tells. `choice` is the name of the player that the user has chosen, "auto",
/// or empty when the user may have chosen anybody.
std::string disagreement(const Fields& panel, const Fields& players, const std::string& choice);

}  // namespace Corvella
