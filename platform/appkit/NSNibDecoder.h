#pragma once

#include <string>

#include <pugixml.hpp>

#include "platform/appkit/NSNibDocument.h"
#include "platform/appkit/NSNibElement.h"
#include "platform/appkit/NSNibServices.h"
#include "platform/foundation/NSCoder.h"

/// Turns the elements of views into the coders that views are made from. For use while a file is
/// loaded.
class NSNibDecoder {
 public:
  /// Both must outlive the decoder.
  NSNibDecoder(const NSNibDocument& document, const NSNibServices& services)
      : document_(document), services_(services) {}

  /// The values of a view, with its cell under the key "cell". Its subviews and connections are not
  /// among them.
  NSCoder coderForView(const pugi::xml_node& view, const NSNibElement& element) const;

 private:
  void readAttributes(const pugi::xml_node& node, NSCoder& coder) const;
  void readCell(const pugi::xml_node& cell, NSCoder& view) const;
  void readValue(const pugi::xml_node& value, NSCoder& coder) const;
  NSCoder& addChild(const pugi::xml_node& child, const std::string& key, NSCoder& coder) const;
  void checkRectangle(const NSCoder& rectangle) const;

  const NSNibDocument& document_;
  const NSNibServices& services_;
};
