#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class NSImage;

/// A folder of resources, by name. All of them are read when the bundle is made: an update of the
/// program, or its removal, then changes nothing for one that runs. Any thread.
class NSBundle {
 public:
  /// A folder, or a file in it, that cannot be read is as if it were not there.
  explicit NSBundle(std::filesystem::path resourceFolder);

  /// Where the resource would lie. `name` is relative to the bundle, such as "empty_artwork.png".
  std::filesystem::path pathForResource(std::string_view name) const;

  /// The resource's bytes; absent when there is no such regular file or it could not be read.
  std::optional<std::vector<std::byte>> dataForResource(std::string_view name) const;

  using DecodeImage = std::function<std::shared_ptr<const NSImage>(std::span<const std::byte>)>;

  /// The picture that `decode` makes of the resource's bytes the first time that it is asked for;
  /// null when there is no such resource or it is no picture.
  std::shared_ptr<const NSImage> imageForResource(std::string_view name,
                                                  const DecodeImage& decode) const;

 private:
  std::filesystem::path folder_;
  std::map<std::string, std::vector<std::byte>, std::less<>> resources_;
  mutable std::mutex mutex_;
  mutable std::map<std::string, std::shared_ptr<const NSImage>, std::less<>> images_;
};
