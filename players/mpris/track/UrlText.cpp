#include "players/mpris/track/UrlText.h"

#include <charconv>
#include <cstddef>
#include <optional>
#include <system_error>

#include "players/AsciiText.h"

namespace Corvella {

namespace {

/// The byte that an escape at `index` stands for; absent when no valid one starts there.
std::optional<char> escapeAt(std::string_view text, std::size_t index) {
  const std::string_view digits = text.substr(index + 1, 2);
  if (text[index] != '%' || digits.size() != 2) return std::nullopt;
  unsigned char byte = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + 2, byte, 16);
  if (error != std::errc{} || end != digits.data() + 2) return std::nullopt;
  return static_cast<char>(byte);
}

}  // namespace

bool hasScheme(std::string_view url, std::string_view scheme) {
  return url.size() > scheme.size() && url[scheme.size()] == ':' &&
         sameText(url.substr(0, scheme.size()), scheme);
}

std::string percentDecoded(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t index = 0; index < text.size(); ++index) {
    const auto byte = escapeAt(text, index);
    decoded += byte.value_or(text[index]);
    if (byte) index += 2;
  }
  return decoded;
}

bool isPercentEncoded(std::string_view text) {
  for (auto index = text.find('%'); index != std::string_view::npos;
       index = text.find('%', index + 1)) {
    if (!escapeAt(text, index)) return false;
  }
  return true;
}

}  // namespace Corvella
