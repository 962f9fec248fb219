#pragma once

#include <string>
#include <string_view>

#include "extension/WidgetDisplay.h"

namespace Corvella {

/// The text with the results of `replace` in the place of the characters that must not reach a
/// terminal. Control characters would break the line or start a sequence that changes the settings
/// of the terminal; embeddings, overrides and isolates of the bidirectional algorithm would have
/// whatever follows read in another order. UTF-8.
std::string withoutControls(std::string_view text, std::string (*replace)(char32_t character));

/// The display as text, one outlet a line under its own name; ends in a line feed.
std::string displayText(const WidgetDisplay& display);

/// The whole text of the lyrics panel, each line ended by a line feed and without control
/// characters; empty without lyrics.
std::string lyricsText(const WidgetDisplay& display);

}  // namespace Corvella
