#pragma once

#include <QString>
#include <string>

#include "players/PlayerDescription.h"

namespace Corvella {

/// Why a control cannot be used on this player, in plain text; empty when it can.
QString controlRefusal(const std::string& identifier, const PlayerDescription& player);

}  // namespace Corvella
