#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A folder of resources, by name. All of them are read when the bundle is made: an update of the
/// program, or its removal, then changes nothing for one that runs. Immutable; any thread.
class NSBundle {
 public:
  /// A folder, or a file in it, that cannot be read is as if it were not there.
  explicit NSBundle(std::filesystem::path resourceFolder);

  /// Where the resource would lie. `name` is relative to the bundle, such as "empty_artwork.png".
  std::filesystem::path pathForResource(std::string_view name) const;

  /// The resource's bytes; absent when there is no such regular file or it could not be read.
  std::optional<std::vector<std::byte>> dataForResource(std::string_view name) const;

 private:
  std::filesystem::path folder_;
  std::map<std::string, std::vector<std::byte>, std::less<>> resources_;
};
