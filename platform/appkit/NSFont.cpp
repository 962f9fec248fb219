#include "platform/appkit/NSFont.h"

#include <cmath>
#include <utility>

namespace {

// The platform's size of texts that name none, and what it takes for a size that is none.
constexpr double systemFontSize = 13;
constexpr double fallbackSize = 12;

}  // namespace

NSFont::NSFont(Made, std::string familyName, double pointSize, bool bold)
    : familyName_(std::move(familyName)),
      pointSize_(pointSize > 0 && std::isfinite(pointSize) ? pointSize : fallbackSize),
      bold_(bold) {}

std::shared_ptr<const NSFont> NSFont::fontWithName(std::string_view name, double size,
                                                   const NSFontFinder& finder) {
  if (!finder.hasFamily(name)) return nullptr;
  return std::make_shared<const NSFont>(Made(), std::string(name), size, false);
}

std::shared_ptr<const NSFont> NSFont::systemFontOfSize(double size) {
  return std::make_shared<const NSFont>(Made(), std::string(), size, false);
}

std::shared_ptr<const NSFont> NSFont::boldSystemFontOfSize(double size) {
  return std::make_shared<const NSFont>(Made(), std::string(), size, true);
}

std::shared_ptr<const NSFont> NSFont::decodeForKey(const NSCoder& coder, std::string_view key) {
  const NSCoder* const font = coder.childForKey(key);
  if (!font) return nullptr;
  const double size = font->decodeDoubleForKey("size", systemFontSize);
  if (font->containsValueForKey("name")) {
    return fontWithName(font->decodeStringForKey("name"), size, coder.fontFinder());
  }
  const bool bold =
      font->decodeCaseForKey("metaFont", {{"system", false}, {"systemBold", true}}, false);
  return bold ? boldSystemFontOfSize(size) : systemFontOfSize(size);
}

bool NSFont::areEqual(const NSFont* left, const NSFont* right) {
  if (!left || !right) return left == right;
  return left->familyName_ == right->familyName_ && left->pointSize_ == right->pointSize_ &&
         left->bold_ == right->bold_;
}
