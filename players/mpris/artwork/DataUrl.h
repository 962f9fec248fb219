#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace Corvella {

/// The bytes that a `data:` address holds (RFC 2397), of any media type: in base64, with or without
/// padding and with blanks anywhere, or percent-encoded. Absent when the address is malformed or of
/// another scheme. Any thread.
std::optional<std::vector<std::byte>> bytesOfDataUrl(std::string_view url);

}  // namespace Corvella
