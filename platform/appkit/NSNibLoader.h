#pragma once

#include <string_view>

#include "platform/appkit/NSInterfaceLoader.h"
#include "platform/appkit/NSNibServices.h"

/// Loads interface files from the resources of a bundle, where "Name" is the resource "Name.xib".
/// Immutable. Lives on the main queue.
class NSNibLoader final : public NSInterfaceLoader {
 public:
  /// `mainBundle` serves those who name no bundle; it and the services must outlive the loader.
  NSNibLoader(const NSBundle& mainBundle, NSNibServices services);

  void instantiate(std::string_view name, const NSBundle* bundle,
                   NSViewController& owner) const override;

 private:
  const NSBundle& mainBundle_;
  NSNibServices services_;
};
