#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

/// The XML of an interface file, which knows where each element stands. Immutable.
class NSNibDocument {
 public:
  /// `fileName` is for errors, which are as `NSNib` says.
  NSNibDocument(std::span<const std::byte> bytes, std::string fileName);

  /// The elements that stand for the file's objects.
  std::vector<pugi::xml_node> objects() const;

  /// The elements within `node`; text between them is an error.
  std::vector<pugi::xml_node> elements(const pugi::xml_node& node) const;

  /// An attribute that `node` must have.
  std::string attribute(const pugi::xml_node& node, const char* key) const;

  /// "Module.Class" of an element that names a class of its own; empty for others.
  static std::string customClass(const pugi::xml_node& node);

  /// "FILE:LINE".
  std::string place(const pugi::xml_node& node) const;

  [[noreturn]] void fail(const pugi::xml_node& node, std::string_view problem,
                         std::string_view name) const;
  [[noreturn]] void failForUnknownElement(const pugi::xml_node& node) const;

 private:
  std::string placeOfOffset(std::ptrdiff_t offset) const;

  std::string fileName_;
  std::vector<std::ptrdiff_t> lineEnds_;
  pugi::xml_document xml_;
};
