#pragma once

#include <string_view>

#include "platform/foundation/NSClass.h"

/// What the loader knows of an element that stands for a view.
struct NSNibElement {
  std::string_view name;
  NSClass viewClass;          ///< The class without a custom one, which a custom one derives from.
  std::string_view cellName;  ///< The element of the view's cell; empty for a view without one.

  /// Null when no view has that element.
  static const NSNibElement* named(std::string_view name);
};
