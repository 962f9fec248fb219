#include "platform/appkit/NSNibDecoder.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

/// An element that holds values, and the key under which it does.
struct ValueElement {
  std::string_view name;
  std::string_view key;
  friend bool operator==(const ValueElement&, const ValueElement&) = default;
};

constexpr std::array known{
    ValueElement{"rect", "frame"},
    ValueElement{"autoresizingMask", "autoresizingMask"},
    ValueElement{"font", "font"},
    ValueElement{"color", "textColor"},
    ValueElement{"accessibility", "accessibility"},
};

// How a button looks while it is pressed, and where the editor shows the view.
constexpr std::array ignored{
    ValueElement{"behavior", "behavior"},
    ValueElement{"point", "canvasLocation"},
};

std::string keyOf(const pugi::xml_node& node) {
  return node.attribute("key").as_string(node.name());
}

}  // namespace

NSCoder NSNibDecoder::coderForView(const pugi::xml_node& view, const NSNibElement& element) const {
  NSCoder coder(document_.place(view), services_.textMeasurer, services_.fontFinder);
  readAttributes(view, coder);
  for (const auto& child : document_.elements(view)) {
    const std::string_view name = child.name();
    if (name == "subviews" || name == "connections") continue;
    name == element.cellName ? readCell(child, coder) : readValue(child, coder);
  }
  if (!coder.childForKey("frame")) document_.fail(view, "an element without its", "frame");
  if (!element.cellName.empty() && !coder.childForKey("cell")) {
    document_.fail(view, "an element without its", element.cellName);
  }
  return coder;
}

void NSNibDecoder::readAttributes(const pugi::xml_node& node, NSCoder& coder) const {
  for (const auto& attribute : node.attributes()) {
    coder.encodeString(attribute.name(), attribute.value());
  }
}

void NSNibDecoder::readCell(const pugi::xml_node& cell, NSCoder& view) const {
  const std::string key = keyOf(cell);
  if (key != "cell") document_.fail(cell, "unknown key", key);
  NSCoder& coder = addChild(cell, key, view);
  for (const auto& value : document_.elements(cell)) readValue(value, coder);
}

void NSNibDecoder::readValue(const pugi::xml_node& value, NSCoder& coder) const {
  const std::string key = keyOf(value);
  const ValueElement element{.name = value.name(), .key = key};
  if (std::ranges::find(ignored, element) != ignored.end()) return;
  if (std::ranges::find(known, element.name, &ValueElement::name) == known.end()) {
    document_.failForUnknownElement(value);
  }
  if (std::ranges::find(known, element) == known.end()) document_.fail(value, "unknown key", key);

  const NSCoder& child = addChild(value, key, coder);
  for (const auto& within : document_.elements(value)) document_.failForUnknownElement(within);
  if (element.name == "rect") checkRectangle(child);
}

NSCoder& NSNibDecoder::addChild(const pugi::xml_node& child, const std::string& key,
                                NSCoder& coder) const {
  if (coder.childForKey(key)) document_.fail(child, "a second element for the key", key);
  NSCoder& added = coder.encodeChild(key, document_.place(child));
  readAttributes(child, added);
  return added;
}

void NSNibDecoder::checkRectangle(const NSCoder& rectangle) const {
  for (const std::string_view key : {"x", "y", "width", "height"}) {
    if (!rectangle.containsValueForKey(key)) rectangle.failForKey(key, "is missing");
    const bool isExtent = key == "width" || key == "height";
    if (rectangle.decodeDoubleForKey(key) < 0 && isExtent) {
      rectangle.failForKey(key, "is below zero");
    }
  }
}
