#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "platform/appkit/NSImageDecoder.h"

/// Knows the made-up pictures of `picture()`: width and height in a byte each. Less is broken.
class FakeImageDecoder final : public NSImageDecoder {
 public:
  static std::vector<std::byte> picture(int width, int height) {
    return {std::byte(width), std::byte(height)};
  }

  /// Whatever is longer decodes to a picture of this size.
  void knowAnythingElseAs(int width, int height) { longer_ = NSDecodedImage{width, height, {}}; }

  std::optional<NSDecodedImage> decode(std::span<const std::byte> bytes) const override {
    if (bytes.size() > 2) return longer_;
    if (bytes.size() < 2) return std::nullopt;
    return NSDecodedImage{std::to_integer<int>(bytes[0]), std::to_integer<int>(bytes[1]), {}};
  }

 private:
  std::optional<NSDecodedImage> longer_;
};
