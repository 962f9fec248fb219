#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/// A value of a property list: a boolean, a text, an array or a dictionary.
class NSPropertyList {
 public:
  using Array = std::vector<NSPropertyList>;
  using Dictionary = std::map<std::string, NSPropertyList, std::less<>>;

  /// Reads an XML property list. Throws `std::runtime_error` that names `fileName` and what is
  /// wrong when the bytes are not one, or hold a kind of value that this system does not use.
  static NSPropertyList propertyListWithData(std::span<const std::byte> bytes,
                                             std::string_view fileName);

  NSPropertyList() = default;
  explicit NSPropertyList(bool value) : value_(value) {}
  explicit NSPropertyList(std::string value) : value_(std::move(value)) {}
  explicit NSPropertyList(Array value) : value_(std::move(value)) {}
  explicit NSPropertyList(Dictionary value) : value_(std::move(value)) {}

  /// The value when it is of that kind; null otherwise. Owned by this list.
  const std::string* string() const { return std::get_if<std::string>(&value_); }
  const Array* array() const { return std::get_if<Array>(&value_); }
  const Dictionary* dictionary() const { return std::get_if<Dictionary>(&value_); }

  /// The value stored under `key`; null when this is no dictionary or has no such key.
  const NSPropertyList* objectForKey(std::string_view key) const;

 private:
  std::variant<std::monostate, bool, std::string, Array, Dictionary> value_;
};
