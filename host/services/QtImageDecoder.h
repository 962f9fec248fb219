#pragma once

#include <optional>
#include <span>

#include "platform/appkit/NSImageDecoder.h"

namespace Corvella {

/// Decodes pictures of the formats that covers come in (PNG, JPEG, WebP, GIF, BMP and SVG), turned
/// upright. A picture larger than `kLargestBitmap` pixels on a side comes as a bitmap scaled down
/// to that. Refused is what would take too much time or memory: more than `kMostPixels` pixels, or
/// `kMostPixelsInRows` of a JPEG or PNG that can be read row by row; a JPEG of more than
/// `kMostScans` scans, each of which is decoded by itself, or of more than `kMostPixelsInScans` in
/// all of them; and a drawing of very many parts. A drawing that refers to anything but its own
/// parts is refused, too: no file is opened because a picture says so. Any thread.
class QtImageDecoder final : public NSImageDecoder {
 public:
  static constexpr int kLargestBitmap = 512;
  static constexpr long long kMostPixels = 30'000'000;
  static constexpr long long kMostPixelsInRows = 200'000'000;
  static constexpr int kMostScans = 100;
  static constexpr long long kMostPixelsInScans = 600'000'000;

  std::optional<NSDecodedImage> decode(std::span<const std::byte> bytes) const override;
};

}  // namespace Corvella
