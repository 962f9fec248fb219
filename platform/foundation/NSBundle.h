#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

/// A folder of resources, read by name. Immutable; any thread.
class NSBundle {
 public:
  explicit NSBundle(std::filesystem::path resourceFolder);

  /// Where the resource would lie. `name` is relative to the bundle, such as "empty_artwork.png".
  std::filesystem::path pathForResource(std::string_view name) const;

  /// The resource's bytes; absent when there is no such regular file or it cannot be read.
  std::optional<std::vector<std::byte>> dataForResource(std::string_view name) const;

 private:
  std::filesystem::path folder_;
};
