#pragma once

#include <sys/types.h>

/// What the kernel tells of a running program, from proc(5). All throw `std::runtime_error` when
/// the program has ended. Threads that have ended are not counted.
namespace Corvella::SystemFigures {

/// What it has in memory, shared with others or not.
double residentMegabytes(pid_t program);
/// Of that, what no file stands behind.
double anonymousMegabytes(pid_t program);

/// The processor time that its threads have used.
double processorSeconds(pid_t program);

/// How often its threads have gone to sleep, which is once for each time that they were woken;
/// without the thread `except`.
double sleeps(pid_t program, pid_t except = 0);

}  // namespace Corvella::SystemFigures
