#include "players/mpris/DataUrl.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "players/mpris/UrlText.h"

namespace Corvella {

namespace {

constexpr std::string_view blanks = " \t\r\n\f";

std::string withoutBlanks(std::string_view text) {
  std::string result(text);
  std::erase_if(result, [](char c) { return blanks.find(c) != std::string_view::npos; });
  return result;
}

/// Whether the part before the comma ends with ";base64", in any case.
bool saysBase64(std::string_view header) {
  const auto parameter = withoutBlanks(header.substr(header.rfind(';') + 1));
  // With a colon put behind it the word reads like a scheme, which knows no case either.
  return header.find(';') != std::string_view::npos && hasScheme(parameter + ':', "base64");
}

/// The six bits that a character of base64 stands for; absent for any other character.
std::optional<std::uint32_t> sextet(char c) {
  if (c >= 'A' && c <= 'Z') return static_cast<std::uint32_t>(c - 'A');
  if (c >= 'a' && c <= 'z') return static_cast<std::uint32_t>(c - 'a' + 26);
  if (c >= '0' && c <= '9') return static_cast<std::uint32_t>(c - '0' + 52);
  if (c == '+') return 62;
  if (c == '/') return 63;
  return std::nullopt;
}

/// Takes the padding off; absent when there is some that does not fill the last group.
std::optional<std::string_view> withoutPadding(std::string_view text) {
  const auto bare = text.substr(0, text.find_last_not_of('=') + 1);
  const auto padding = text.size() - bare.size();
  if (padding > 2 || (padding > 0 && text.size() % 4 != 0)) return std::nullopt;
  return bare;
}

std::optional<std::vector<std::byte>> bytesOfBase64(std::string_view text) {
  const auto digits = withoutPadding(text);
  if (!digits || digits->size() % 4 == 1) return std::nullopt;
  std::vector<std::byte> bytes;
  bytes.reserve(digits->size() * 3 / 4);
  std::uint32_t buffer = 0;
  unsigned held = 0;
  for (const char digit : *digits) {
    const auto bits = sextet(digit);
    if (!bits) return std::nullopt;
    buffer = buffer << 6U | *bits;
    held += 6;
    if (held < 8) continue;
    held -= 8;
    bytes.push_back(static_cast<std::byte>(buffer >> held & 0xFFU));
  }
  return bytes;
}

std::vector<std::byte> bytesOfText(std::string_view text) {
  std::vector<std::byte> bytes(text.size());
  std::transform(text.begin(), text.end(), bytes.begin(),
                 [](char c) { return static_cast<std::byte>(c); });
  return bytes;
}

}  // namespace

std::optional<std::vector<std::byte>> bytesOfDataUrl(std::string_view url) {
  const auto comma = url.find(',');
  if (!hasScheme(url, "data") || comma == std::string_view::npos) return std::nullopt;
  const auto data = url.substr(comma + 1);
  if (!isPercentEncoded(data)) return std::nullopt;
  const auto decoded = percentDecoded(data);
  if (saysBase64(url.substr(0, comma))) return bytesOfBase64(withoutBlanks(decoded));
  return bytesOfText(decoded);
}

}  // namespace Corvella
