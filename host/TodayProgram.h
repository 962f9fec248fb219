#pragma once

#include "host/CommandLine.h"

namespace Corvella {

/// Opens the Today view on the desktop, or that of the Corvella which runs already, and returns
/// when the user has ended it. Where no display server can be reached it draws and prints the view
/// instead, and says so. Returns the exit status; throws `std::runtime_error` with the reason when
/// it fails.
int runTodayView(const CommandLine& commandLine);

/// Draws the Today view into the file that `--snapshot` names. Throws `std::runtime_error` with the
/// reason when that fails.
void drawSnapshot(const CommandLine& commandLine);

}  // namespace Corvella
