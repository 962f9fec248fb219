#pragma once

#include <string_view>

/// Knows which fonts are installed. The host brings the implementation.
class NSFontFinder {
 public:
  virtual ~NSFontFinder() = default;

  /// Whether a font of exactly this family name is installed. To be called on the main
  /// queue.
  virtual bool hasFamily(std::string_view family) const = 0;
};
