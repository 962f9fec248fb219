#pragma once

#include <string>

#include "extension/WidgetDisplay.h"

namespace Corvella {

/// The display as text, one outlet a line under its own name; ends in a line feed.
std::string displayText(const WidgetDisplay& display);

/// The whole text of the lyrics panel, each line ended by a line feed and without control
/// characters; empty without lyrics.
std::string lyricsText(const WidgetDisplay& display);

}  // namespace Corvella
