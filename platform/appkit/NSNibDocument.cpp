#include "platform/appkit/NSNibDocument.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::string_view documentType = "com.apple.InterfaceBuilder3.Cocoa.XIB";
constexpr std::string_view documentVersion = "3.0";

std::vector<std::ptrdiff_t> findLineEnds(std::span<const std::byte> bytes) {
  std::vector<std::ptrdiff_t> ends;
  for (auto byte = bytes.begin(); byte != bytes.end(); ++byte) {
    if (*byte == std::byte{'\n'}) ends.push_back(byte - bytes.begin());
  }
  return ends;
}

}  // namespace

NSNibDocument::NSNibDocument(std::span<const std::byte> bytes, std::string fileName)
    : fileName_(std::move(fileName)), lineEnds_(findLineEnds(bytes)) {
  // Another encoding would be converted first, and offsets would no longer be those of the file.
  const auto parsed =
      xml_.load_buffer(bytes.data(), bytes.size(), pugi::parse_default, pugi::encoding_utf8);
  if (!parsed) {
    throw std::runtime_error(placeOfOffset(parsed.offset) + ": " + parsed.description());
  }
}

std::vector<pugi::xml_node> NSNibDocument::objects() const {
  const pugi::xml_node root = xml_.document_element();
  if (std::string_view(root.name()) != "document") failForUnknownElement(root);
  const std::string type = attribute(root, "type");
  if (type != documentType) fail(root, "unknown type of document", type);
  const std::string version = attribute(root, "version");
  if (version != documentVersion) fail(root, "unknown version", version);

  std::vector<pugi::xml_node> objects;
  for (const auto& part : elements(root)) {
    const std::string_view name = part.name();
    if (name == "dependencies") continue;
    if (name != "objects") failForUnknownElement(part);
    std::ranges::copy(elements(part), std::back_inserter(objects));
  }
  return objects;
}

std::vector<pugi::xml_node> NSNibDocument::elements(const pugi::xml_node& node) const {
  std::vector<pugi::xml_node> elements;
  for (const auto& child : node.children()) {
    if (child.type() != pugi::node_element) fail(node, "text within the element", node.name());
    elements.push_back(child);
  }
  return elements;
}

std::string NSNibDocument::attribute(const pugi::xml_node& node, const char* key) const {
  const auto attribute = node.attribute(key);
  if (!attribute) fail(node, "<" + std::string(node.name()) + "> has no attribute", key);
  return attribute.value();
}

std::string NSNibDocument::customClass(const pugi::xml_node& node) {
  const std::string name = node.attribute("customClass").value();
  const std::string module = node.attribute("customModule").value();
  return module.empty() ? name : module + "." + name;
}

std::string NSNibDocument::place(const pugi::xml_node& node) const {
  return placeOfOffset(node.offset_debug());
}

void NSNibDocument::fail(const pugi::xml_node& node, std::string_view problem,
                         std::string_view name) const {
  throw std::runtime_error(place(node) + ": " + std::string(problem) + " '" + std::string(name) +
                           "'");
}

void NSNibDocument::failForUnknownElement(const pugi::xml_node& node) const {
  fail(node, "unknown element", node.name());
}

std::string NSNibDocument::placeOfOffset(std::ptrdiff_t offset) const {
  const auto end = std::ranges::lower_bound(lineEnds_, offset);
  return fileName_ + ":" + std::to_string(end - lineEnds_.begin() + 1);
}
