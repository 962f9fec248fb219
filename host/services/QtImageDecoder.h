#pragma once

#include <optional>
#include <span>

#include "platform/appkit/NSImageDecoder.h"

namespace Corvella {

/// Decodes the kinds of pictures that Qt knows, turned upright. A picture larger than
/// `kLargestBitmap` pixels on a side comes as a bitmap scaled down to that; one of more than
/// `kMostPixels` pixels is refused.
class QtImageDecoder final : public NSImageDecoder {
 public:
  static constexpr int kLargestBitmap = 512;
  static constexpr long long kMostPixels = 30'000'000;

  std::optional<NSDecodedImage> decode(std::span<const std::byte> bytes) const override;
};

}  // namespace Corvella
