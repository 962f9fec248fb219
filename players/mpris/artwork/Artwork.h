#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace Corvella {

/// No picture file above this size is read, in bytes.
inline constexpr std::size_t kLargestPicture = std::size_t{32} << 20U;

/// Whether the bytes start like a picture file of a kind that covers come in: PNG, JPEG, GIF, BMP,
/// WebP, TIFF, AVIF, HEIC or ICO. Any thread.
bool looksLikePicture(std::span<const std::byte> bytes);

/// The picture file behind an address of the scheme `data:`, `http:` or `https:`. Absent for any
/// other scheme, when nothing can be read there within the limits of `kLargestPicture` and
/// `HttpLimits`, and when it is no picture. Any thread; an address of the web blocks as long as
/// `HttpLimits` allows.
std::optional<std::vector<std::byte>> readArtwork(std::string_view url);

/// The first picture file among `paths`, none larger than `kLargestPicture`. Any thread; blocks as
/// long as the file system does.
std::optional<std::vector<std::byte>> readPictureFile(
    const std::vector<std::filesystem::path>& paths);

}  // namespace Corvella
