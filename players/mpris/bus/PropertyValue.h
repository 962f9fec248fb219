#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace Corvella {

struct Property;

/// The properties of a player, or the entries of its metadata, as they came over the bus.
class PropertyMap {
 public:
  PropertyMap() = default;
  explicit PropertyMap(std::vector<Property> properties);

  /// The value of that name; null when it is not listed. Owned by the map.
  const struct PropertyValue* find(std::string_view name) const;
  bool contains(std::string_view name) const { return find(name) != nullptr; }

  /// Whether both list the same values in the same order.
  bool operator==(const PropertyMap& other) const;

 private:
  std::vector<Property> properties_;
};

/// One value from the bus, whatever its type was there; types that no player property has are left
/// empty.
struct PropertyValue {
  std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string,
               std::vector<std::string>, PropertyMap>
      content;

  bool operator==(const PropertyValue& other) const { return content == other.content; }
};

struct Property {
  std::string name;
  PropertyValue value;

  bool operator==(const Property& other) const = default;
};

inline PropertyMap::PropertyMap(std::vector<Property> properties)
    : properties_(std::move(properties)) {}

inline bool PropertyMap::operator==(const PropertyMap& other) const {
  return properties_ == other.properties_;
}

inline const PropertyValue* PropertyMap::find(std::string_view name) const {
  for (const auto& property : properties_) {
    if (property.name == name) return &property.value;
  }
  return nullptr;
}

}  // namespace Corvella
