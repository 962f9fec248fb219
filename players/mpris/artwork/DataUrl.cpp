#include "players/mpris/artwork/DataUrl.h"

#include <span>
#include <string>

#include <tbytevector.h>

#include "players/mpris/track/UrlText.h"

namespace Corvella {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";

std::string withoutBlanks(std::string_view text) {
  std::string result(text);
  std::erase_if(result, [](char c) { return kBlanks.find(c) != std::string_view::npos; });
  return result;
}

/// Whether the part before the comma ends with ";base64", in any case.
bool saysBase64(std::string_view header) {
  const auto parameter = withoutBlanks(header.substr(header.rfind(';') + 1));
  // The word is compared without regard to case, just as `hasScheme` compares schemes.
  return header.find(';') != std::string_view::npos && hasScheme(parameter + ':', "base64");
}

/// Absent when the text is no base64.
std::optional<std::vector<std::byte>> bytesOfBase64(std::string text) {
  if (text.empty()) return std::vector<std::byte>();
  // Some players leave the padding out, without which TagLib decodes nothing.
  if (!text.ends_with('=')) text.append((4 - text.size() % 4) % 4, '=');
  const auto decoded =
      TagLib::ByteVector::fromBase64({text.data(), static_cast<unsigned>(text.size())});
  if (decoded.isEmpty()) return std::nullopt;
  const auto bytes = std::as_bytes(std::span(decoded.data(), decoded.size()));
  return std::vector(bytes.begin(), bytes.end());
}

std::vector<std::byte> bytesOfText(std::string_view text) {
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
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
