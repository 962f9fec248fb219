#pragma once

#include "host/program/CommandLine.h"

namespace Corvella {

/// Prints what the widget shows once it has settled, and its lyrics where they are asked for; or
/// the song as a JSON object (see `songJson`). With `follow` it prints again whenever the player
/// has news that change more than the position, and returns when a signal asks the program to end.
/// All else that the process writes goes to standard error. Throws `std::runtime_error` with the
/// reason when the widget does not start or nothing can be written, or, after the display has been
/// printed, when the player that the user named is not there or does not answer.
void runPrintCommand(const CommandLine& commandLine);

}  // namespace Corvella
