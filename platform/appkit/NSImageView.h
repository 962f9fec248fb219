#pragma once

#include <memory>
#include <utility>

#include "platform/appkit/NSControl.h"
#include "platform/appkit/NSImage.h"

/// Shows a picture, or none. Lives on the main queue.
class NSImageView : public NSControl {
 public:
  explicit NSImageView(NSRect frame = {});
  explicit NSImageView(const NSCoder& coder);

  /// Null where there is no picture.
  const std::shared_ptr<const NSImage>& image() const { return image_; }
  void setImage(std::shared_ptr<const NSImage> image) { store(image_, std::move(image)); }

 private:
  std::shared_ptr<const NSImage> image_;
};
