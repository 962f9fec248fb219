#pragma once

#include <string_view>

#include "platform/appkit/NSInterfaceLoader.h"

class NSClassRegistry;
class NSFontFinder;
class NSTextMeasurer;

/// What creating the objects of an interface file needs. The text measurer and the font finder must
/// outlive those objects.
struct NSNibServices {
  const NSClassRegistry& classes;
  const NSTextMeasurer& textMeasurer;
  const NSFontFinder& fontFinder;
};

/// Loads interface files, "Name" from the resource "Name.xib" of a bundle: Interface Builder
/// documents in their XML form (XIB 3), of which it knows what this system's own file uses. The
/// outlet "view" is connected last, so that an error leaves the owner without a view.
///
/// Whatever is wrong within a file is an error that reads "FILE:LINE: what 'name'". Immutable.
/// Lives on the main queue.
class NSNibLoader final : public NSInterfaceLoader {
 public:
  /// `mainBundle` serves those who name no bundle; it and the services must outlive the loader.
  NSNibLoader(const NSBundle& mainBundle, NSNibServices services)
      : mainBundle_(mainBundle), services_(services) {}

  void instantiate(std::string_view name, const NSBundle* bundle,
                   NSViewController& owner) const override;

 private:
  const NSBundle& mainBundle_;
  NSNibServices services_;
};
