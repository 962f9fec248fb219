#include "platform/appkit/NSImage.h"

#include <utility>

std::shared_ptr<const NSImage> NSImage::initWithData(std::span<const std::byte> bytes,
                                                     const NSImageDecoder& decoder) {
  auto picture = decoder.decode(bytes);
  if (!picture) return nullptr;
  auto image = std::make_shared<NSImage>();
  image->picture_ = *std::move(picture);
  return image;
}

std::shared_ptr<const NSImage> NSImage::imageNamed(std::string_view name, const NSBundle& bundle,
                                                   const NSImageDecoder& decoder) {
  return bundle.imageForResource(
      name, [&](std::span<const std::byte> bytes) { return initWithData(bytes, decoder); });
}
