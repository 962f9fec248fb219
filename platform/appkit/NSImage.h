#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

#include "platform/appkit/NSImageDecoder.h"
#include "platform/foundation/NSBundle.h"

/// A picture. Immutable and shared; may be handed from one thread to another.
class NSImage {
 public:
  /// Decodes a picture file; null when the bytes are not a picture. Any thread.
  static std::shared_ptr<const NSImage> initWithData(std::span<const std::byte> bytes,
                                                     const NSImageDecoder& decoder);

  /// Looks the picture up among the bundle's resources; null when there is none of that name or it
  /// does not decode. The bundle keeps what was decoded, so every caller gets the same picture. Any
  /// thread.
  static std::shared_ptr<const NSImage> imageNamed(std::string_view name, const NSBundle& bundle,
                                                   const NSImageDecoder& decoder);

  /// An empty image: no size, no pixels.
  NSImage() = default;

  /// Pixels of the picture as it was stored.
  int width() const { return picture_.width; }
  int height() const { return picture_.height; }
  /// The pixels to draw; the bitmap may be smaller than the picture.
  const NSBitmapImageRep& bitmap() const { return picture_.bitmap; }

 private:
  NSDecodedImage picture_;
};
