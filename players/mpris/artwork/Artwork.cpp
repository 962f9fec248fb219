#include "players/mpris/artwork/Artwork.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/base/RegularFile.h"
#include "players/mpris/artwork/DataUrl.h"
#include "players/mpris/artwork/HttpFetcher.h"
#include "players/mpris/track/UrlText.h"

namespace Corvella {

namespace {

using namespace std::string_view_literals;

/// As many bytes as the marks of the kinds below take, but for drawings.
constexpr std::size_t kLongestMark = 18;

/// That many bytes from the start of a file, filled up with NUL.
std::string headOf(std::span<const std::byte> bytes, std::size_t length) {
  std::string head(length, '\0');
  std::transform(bytes.begin(), bytes.begin() + std::min(std::ssize(bytes), std::ssize(head)),
                 head.begin(), [](std::byte byte) { return static_cast<char>(byte); });
  return head;
}

bool isWebP(std::string_view bytes) {
  return bytes.starts_with("RIFF") && bytes.substr(8).starts_with("WEBP");
}

/// Two letters alone could start any text, so the reserved fields and the size of the second header
/// (the sizes of Windows and OS/2) count too.
bool isBitmap(std::string_view bytes) {
  const auto headerSize = static_cast<unsigned char>(bytes[14]);
  constexpr std::array<unsigned char, 8> kHeaderSizes = {12, 16, 40, 52, 56, 64, 108, 124};
  return bytes.starts_with("BM") && bytes.substr(6, 4) == "\0\0\0\0"sv &&
         bytes.substr(15, 3) == "\0\0\0"sv &&
         std::find(kHeaderSizes.begin(), kHeaderSizes.end(), headerSize) != kHeaderSizes.end();
}

/// Whether this is a file of icons. Cursors have the same format with a 2 in place of the 1. The
/// number of icons is not zero, and the tenth byte is reserved.
bool isIcon(std::string_view bytes) {
  return bytes.starts_with("\0\0\1\0"sv) && bytes.substr(4, 2) != "\0\0"sv && bytes[9] == '\0';
}

/// AVIF and HEIC share the box format of MP4 and differ from films in the brand.
bool isHeif(std::string_view bytes) {
  constexpr std::array kBrands = {"avif"sv, "avis"sv, "heic"sv, "heix"sv,
                                  "heim"sv, "heis"sv, "mif1"sv, "msf1"sv};
  return bytes.substr(4).starts_with("ftyp") &&
         std::find(kBrands.begin(), kBrands.end(), bytes.substr(8, 4)) != kBrands.end();
}

/// Whether this is a drawing in SVG: an XML text whose first element is one. Web pages may contain
/// drawings, too.
bool isSvg(std::span<const std::byte> bytes) {
  constexpr std::size_t kLongestPrologue = 1024;
  const auto text = headOf(bytes, kLongestPrologue);
  constexpr auto kByteOrderMark = "\xef\xbb\xbf"sv;
  const auto start = text.find_first_not_of(" \t\r\n", text.starts_with(kByteOrderMark) ? 3 : 0);
  if (start == std::string::npos || text[start] != '<') return false;
  for (auto at = start; at != std::string::npos; at = text.find('<', at + 1)) {
    const std::string_view tag = std::string_view(text).substr(at);
    if (!tag.starts_with("<?") && !tag.starts_with("<!")) return tag.starts_with("<svg");
  }
  return false;
}

std::optional<std::vector<std::byte>> readAddress(std::string_view url) {
  if (hasScheme(url, "data")) return bytesOfDataUrl(url);
  if (hasScheme(url, "http") || hasScheme(url, "https"))
    return HttpFetcher().fetch(std::string(url));
  return std::nullopt;
}

}  // namespace

bool looksLikePicture(std::span<const std::byte> bytes) {
  const std::string head = headOf(bytes, kLongestMark);
  constexpr std::array kStarts = {
      "\x89PNG\r\n\x1A\n"sv, "\xFF\xD8\xFF"sv, "GIF87a"sv, "GIF89a"sv, "II*\0"sv, "MM\0*"sv};
  return std::any_of(kStarts.begin(), kStarts.end(),
                     [&](std::string_view start) { return head.starts_with(start); }) ||
         isWebP(head) || isBitmap(head) || isIcon(head) || isHeif(head) || isSvg(bytes);
}

std::optional<std::vector<std::byte>> readArtwork(std::string_view url) {
  auto bytes = readAddress(url);
  if (!bytes || bytes->size() > kLargestPicture || !looksLikePicture(*bytes)) return std::nullopt;
  return bytes;
}

std::optional<std::vector<std::byte>> readPictureFile(
    const std::vector<std::filesystem::path>& paths) {
  for (const auto& path : paths) {
    const auto file = RegularFile::open(path);
    auto bytes = file ? file->readAll(kLargestPicture) : std::nullopt;
    if (bytes && looksLikePicture(*bytes)) return bytes;
  }
  return std::nullopt;
}

}  // namespace Corvella
