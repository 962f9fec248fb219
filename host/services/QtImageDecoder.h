#pragma once

#include <optional>
#include <span>

#include "platform/appkit/NSImageDecoder.h"

namespace Corvella {

/// Decodes the kinds of pictures that Qt and its plugins know, turned upright. A picture larger
/// than `kLargestBitmap` pixels on a side comes as a bitmap scaled down to that. Refused is what
/// would take too much time or memory: more than `kMostPixels` pixels, or `kMostPixelsInRows` of a
/// JPEG or PNG that can be read row by row, and a JPEG of more than `kMostScans` scans, each of
/// which is decoded by itself. Any thread.
class QtImageDecoder final : public NSImageDecoder {
 public:
  static constexpr int kLargestBitmap = 512;
  static constexpr long long kMostPixels = 30'000'000;
  static constexpr long long kMostPixelsInRows = 200'000'000;
  static constexpr int kMostScans = 100;

  std::optional<NSDecodedImage> decode(std::span<const std::byte> bytes) const override;
};

}  // namespace Corvella
