#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace Corvella {

/// Whether the bytes are UTF-8, with no overlong forms, no surrogates, nothing beyond U+10FFFF.
/// Any thread.
bool isUtf8(std::string_view bytes);

/// The bytes as UTF-8: U+FFFD stands in place of each sequence that is not. Any thread.
std::string repairedUtf8(std::string_view bytes);

/// The text of a file: in the encoding that its byte order mark tells, and without a mark in UTF-8
/// or else in Latin-1. The result is UTF-8 without a byte order mark. Any thread.
std::string textOfFile(std::span<const std::byte> bytes);

}  // namespace Corvella
