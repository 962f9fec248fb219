#include "platform/foundation/NSBundle.h"

#include <limits>
#include <utility>

#include "platform/base/RegularFile.h"

NSBundle::NSBundle(std::filesystem::path resourceFolder) : folder_(std::move(resourceFolder)) {}

std::filesystem::path NSBundle::pathForResource(std::string_view name) const {
  return folder_ / name;
}

std::optional<std::vector<std::byte>> NSBundle::dataForResource(std::string_view name) const {
  const auto file = Corvella::RegularFile::open(pathForResource(name));
  return file ? file->readAll(std::numeric_limits<std::size_t>::max()) : std::nullopt;
}
