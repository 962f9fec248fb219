#include "platform/foundation/NSBundle.h"

#include <limits>
#include <system_error>
#include <utility>

#include "platform/base/RegularFile.h"

NSBundle::NSBundle(std::filesystem::path resourceFolder) : folder_(std::move(resourceFolder)) {
  std::error_code error;
  const std::filesystem::recursive_directory_iterator files(folder_, error);
  for (auto at = begin(files); !error && at != end(files); at.increment(error)) {
    const auto file = Corvella::RegularFile::open(at->path());
    auto bytes = file ? file->readAll(std::numeric_limits<std::size_t>::max()) : std::nullopt;
    if (bytes) resources_.emplace(at->path().lexically_relative(folder_), std::move(*bytes));
  }
}

std::filesystem::path NSBundle::pathForResource(std::string_view name) const {
  return folder_ / name;
}

std::optional<std::vector<std::byte>> NSBundle::dataForResource(std::string_view name) const {
  const auto found = resources_.find(name);
  return found == resources_.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<const NSImage> NSBundle::imageForResource(std::string_view name,
                                                          const DecodeImage& decode) const {
  const auto found = resources_.find(name);
  if (found == resources_.end()) return nullptr;
  const std::lock_guard lock(mutex_);
  auto& image = images_[found->first];
  if (!image) image = decode(found->second);
  return image;
}
