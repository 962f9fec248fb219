#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "platform/appkit/NSImageDecoder.h"

/// Knows the made-up pictures of `picture()`: two bytes of mark, then width and height in a byte
/// each.
class FakeImageDecoder final : public NSImageDecoder {
 public:
  static std::vector<std::byte> picture(int width, int height) {
    return {std::byte('P'), std::byte('X'), std::byte(width), std::byte(height)};
  }
  static std::vector<std::byte> brokenPicture() { return {std::byte('P'), std::byte('X')}; }

  /// Whatever does not start with the mark decodes to a picture of this size.
  void knowAnythingElseAs(int width, int height) { otherwise_ = empty(width, height); }

  std::optional<NSDecodedImage> decode(std::span<const std::byte> bytes) const override {
    const bool marked =
        bytes.size() >= 2 && bytes[0] == std::byte('P') && bytes[1] == std::byte('X');
    if (!marked) return otherwise_;
    if (bytes.size() != 4) return std::nullopt;
    return empty(std::to_integer<int>(bytes[2]), std::to_integer<int>(bytes[3]));
  }

 private:
  static NSDecodedImage empty(int width, int height) {
    return {.width = width, .height = height, .bitmap = {}};
  }

  std::optional<NSDecodedImage> otherwise_;
};
