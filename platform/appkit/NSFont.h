#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/appkit/NSFontFinder.h"
#include "platform/foundation/NSCoder.h"

/// A font family at a size. Immutable and shared.
class NSFont {
  struct Made {
    explicit Made() = default;
  };

 public:
  /// Null when no family of that name is installed. `size` is in points; 12 stands in for one that
  /// is not above zero and finite.
  static std::shared_ptr<const NSFont> fontWithName(std::string_view name, double size,
                                                    const NSFontFinder& finder);
  static std::shared_ptr<const NSFont> systemFontOfSize(double size);
  static std::shared_ptr<const NSFont> boldSystemFontOfSize(double size);

  /// Reads the child `key`: its "name", or its "metaFont" ("system" or "systemBold"), and its
  /// "size" (13 where there is none). Null where there is no child or no such font is installed.
  static std::shared_ptr<const NSFont> decodeForKey(const NSCoder& coder, std::string_view key);

  /// Called by the operations above, which alone can make a `Made`.
  NSFont(Made, std::string familyName, double pointSize, bool bold);

  /// The family's name; empty for the system's own font.
  const std::string& familyName() const { return familyName_; }
  /// The size in points, which is above zero.
  double pointSize() const { return pointSize_; }
  bool isBold() const { return bold_; }

  /// Whether two fonts, each null or not, are the same.
  static bool areEqual(const NSFont* left, const NSFont* right);

 private:
  std::string familyName_;
  double pointSize_;
  bool bold_;
};
