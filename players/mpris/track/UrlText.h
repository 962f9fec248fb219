#pragma once

#include <string>
#include <string_view>

namespace Corvella {

/// Whether the address starts with `scheme`, which is given in small letters without its colon.
bool hasScheme(std::string_view url, std::string_view scheme);

/// The text with each valid %XX decoded; a '%' that starts none stays as it is.
std::string percentDecoded(std::string_view text);

/// Whether every '%' of the text starts a valid %XX.
bool isPercentEncoded(std::string_view text);

}  // namespace Corvella
