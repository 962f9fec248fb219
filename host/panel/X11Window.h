#pragma once

#include <QtGui/qwindowdefs.h>

/// What a window manager on X11 knows of a window, and Qt does not ask it. Called on the GUI
/// thread; waits for the X server, which answers within a few milliseconds. Elsewhere than on X11
/// nothing happens, and every answer is no.
namespace Corvella::x11 {

/// Whether the program draws on an X server.
bool isUsed();

/// Whether the user can see half of the window or more: it is on the desktop that is shown, and the
/// windows above it leave so much of it free. A window manager that does not tell which windows are
/// above is taken to keep the window in sight.
bool isInSight(WId window);

/// Has the window manager move the window to the desktop that is shown.
void bringToCurrentDesktop(WId window);

/// Has taskbars and pagers leave the window out. Window managers forget this when a window is
/// hidden, so it is called each time before the window is shown.
void keepOutOfTaskbar(WId window);

}  // namespace Corvella::x11
