#pragma once

#include "host/program/CommandLine.h"

namespace Corvella {

/// Opens the Today view on the desktop, or that of the Corvella which runs already, and returns
/// when the user has ended it. Where no display server can be reached it draws and prints the view
/// instead, and says so. Returns the exit status; throws `std::runtime_error` with the reason when
/// it fails.
int runTodayCommand(const CommandLine& commandLine);

/// Ends the Corvella that is running; does nothing when there is none. Throws `std::runtime_error`
/// when it does not answer.
void runQuitCommand();

}  // namespace Corvella
