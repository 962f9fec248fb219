#pragma once

#include <string>

#include "host/panel/TodayView.h"

namespace Corvella {

/// Opens the view where nobody sees it, with the lyrics unfolded if asked, and returns once the
/// widget has settled. Runs the event loop meanwhile. Throws `std::runtime_error` when the widget
/// does not start.
void openUnseen(TodayView& view, bool unfolded);

/// Writes the view as it stands into a PNG file with `scale` pixels to each point. Throws
/// `std::runtime_error` with the reason when it cannot.
void writePicture(TodayView& view, const std::string& path, double scale);

}  // namespace Corvella
