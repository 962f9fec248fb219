#include "platform/foundation/NSPropertyList.h"

#include <stdexcept>

#include <pugixml.hpp>

namespace {

class Reader {
 public:
  explicit Reader(std::string_view fileName) : fileName_(fileName) {}

  NSPropertyList read(std::span<const std::byte> bytes) const {
    pugi::xml_document document;
    const auto parsed = document.load_buffer(bytes.data(), bytes.size());
    if (!parsed) fail(parsed.description());
    const auto root = document.child("plist").first_child();
    if (!root) fail("no property list inside");
    return value(root);
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const {
    throw std::runtime_error(fileName_ + ": " + reason);
  }

  NSPropertyList value(const pugi::xml_node& node) const {
    const std::string_view kind = node.name();
    if (kind == "true") return NSPropertyList(true);
    if (kind == "false") return NSPropertyList(false);
    if (kind == "string") return NSPropertyList(std::string(node.text().get()));
    if (kind == "array") return NSPropertyList(array(node));
    if (kind == "dict") return NSPropertyList(dictionary(node));
    fail("unknown kind of value <" + std::string(kind) + ">");
  }

  NSPropertyList::Array array(const pugi::xml_node& node) const {
    NSPropertyList::Array items;
    for (const auto& child : node.children()) items.push_back(value(child));
    return items;
  }

  NSPropertyList::Dictionary dictionary(const pugi::xml_node& node) const {
    NSPropertyList::Dictionary entries;
    for (auto key = node.first_child(); key;) {
      if (std::string_view(key.name()) != "key") fail("a value without a key");
      const auto content = key.next_sibling();
      if (!content) fail("no value for the key " + std::string(key.text().get()));
      entries.insert_or_assign(key.text().get(), value(content));
      key = content.next_sibling();
    }
    return entries;
  }

  std::string fileName_;
};

}  // namespace

NSPropertyList NSPropertyList::propertyListWithData(std::span<const std::byte> bytes,
                                                    std::string_view fileName) {
  return Reader(fileName).read(bytes);
}

const NSPropertyList* NSPropertyList::objectForKey(std::string_view key) const {
  const Dictionary* entries = dictionary();
  if (entries == nullptr) return nullptr;
  const auto found = entries->find(key);
  return found == entries->end() ? nullptr : &found->second;
}
