#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// Pixels in rows from the top, each 0xAARRGGBB with colours multiplied by alpha.
struct NSBitmapImageRep {
  int pixelsWide = 0;
  int pixelsHigh = 0;
  std::vector<std::uint32_t> pixels;
};

/// A decoded picture: how large it is, and a bitmap of it that may be smaller.
struct NSDecodedImage {
  int width = 0;   ///< Pixels of the whole picture.
  int height = 0;  ///< Pixels of the whole picture.
  NSBitmapImageRep bitmap;
};

/// Turns the bytes of a picture file into pixels. The host brings the implementation.
class NSImageDecoder {
 public:
  virtual ~NSImageDecoder() = default;

  /// Absent when the bytes are not a picture, are broken, or ask for more than the decoder allows.
  /// The kind of picture is told from the bytes. Any thread; calls may overlap.
  virtual std::optional<NSDecodedImage> decode(std::span<const std::byte> bytes) const = 0;
};
