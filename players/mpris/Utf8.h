#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace Corvella {

/// Whether the bytes are UTF-8, with no overlong forms, no surrogates, nothing beyond U+10FFFF.
/// Any thread.
bool isUtf8(std::string_view bytes);

/// The bytes with U+FFFD in place of each one that is not UTF-8. Any thread.
std::string repairedUtf8(std::string_view bytes);

/// The text without a UTF-8 byte order mark at its start. Any thread.
std::string_view withoutByteOrderMark(std::string_view text);

/// The text of a file that does not say how it is encoded: UTF-8, or UTF-16 with a byte order mark,
/// or else Latin-1. The result is UTF-8 without a byte order mark. Any thread.
std::string textOfFile(std::span<const std::byte> bytes);

}  // namespace Corvella
