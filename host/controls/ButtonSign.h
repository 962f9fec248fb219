#pragma once

#include <QPainterPath>
#include <string_view>

namespace Corvella {

/// The shape of a button's title that is a sign, of transport such as two triangles, or the cross
/// that closes, in pixels; empty for any other title.
QPainterPath buttonSign(std::string_view title);

}  // namespace Corvella
