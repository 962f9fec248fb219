#include "platform/appkit/NSColor.h"

NSColor NSColor::decodeForKey(const NSCoder& coder, std::string_view key, NSColor otherwise) {
  const NSCoder* const color = coder.childForKey(key);
  if (!color) return otherwise;
  if (color->containsValueForKey("name")) {
    return color->decodeCaseForKey(
        "name", {{"labelColor", labelColor()}, {"lightGrayColor", lightGrayColor()}}, otherwise);
  }
  const double alpha = color->decodeDoubleForKey("alpha", 1);
  if (color->containsValueForKey("white")) {
    return colorWithWhite(color->decodeDoubleForKey("white"), alpha);
  }
  return {.red = color->decodeDoubleForKey("red"),
          .green = color->decodeDoubleForKey("green"),
          .blue = color->decodeDoubleForKey("blue"),
          .alpha = alpha};
}
