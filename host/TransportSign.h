#pragma once

#include <QPainterPath>
#include <string_view>

namespace Corvella {

/// The shape of a button's title that is made of transport signs alone, such as two triangles, in
/// pixels; empty for any other title.
QPainterPath transportSign(std::string_view title);

}  // namespace Corvella
