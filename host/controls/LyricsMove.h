#pragma once

#include "host/controls/LyricsLayout.h"

namespace Corvella {

/// Where a key takes the cursor in lyrics. Rows are the parts into which a line wraps.
enum class LyricsMove { Left, Right, WordLeft, WordRight, Up, Down, RowStart, RowEnd, Start, End };

/// The place to which a key takes the cursor from another one; the same place where it can go no
/// further, or where the way is not known yet. `column` is the x coordinate, in pixels, that moves
/// up and down aim at.
qsizetype movedPlace(LyricsLayout& layout, qsizetype place, LyricsMove move, double column);

}  // namespace Corvella
