#pragma once

#include "host/program/CommandLine.h"

namespace Corvella {

/// Draws the Today view into the file that `--snapshot` names; needs no display. Throws
/// `std::runtime_error` with the reason when that fails, or, after the picture has been written,
/// when the player that the user named is not there or does not answer.
void runSnapshotCommand(const CommandLine& commandLine);

}  // namespace Corvella
