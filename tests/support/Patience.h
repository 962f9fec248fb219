#pragma once

#include "players/mpris/bus/MprisBus.h"
#include "tests/support/Eventually.h"

namespace Corvella {

/// Deadlines that no player misses unless it hangs, however busy the machine is.
constexpr MprisDeadlines patience{
    .call = longestWait, .greeting = longestWait, .connecting = longestWait};

}  // namespace Corvella
