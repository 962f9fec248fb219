#include "platform/foundation/NSBundle.h"

#include <fstream>
#include <ios>
#include <system_error>
#include <utility>

NSBundle::NSBundle(std::filesystem::path resourceFolder) : folder_(std::move(resourceFolder)) {}

std::filesystem::path NSBundle::pathForResource(std::string_view name) const {
  return folder_ / name;
}

std::optional<std::vector<std::byte>> NSBundle::dataForResource(std::string_view name) const {
  const auto path = pathForResource(name);
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  const auto size = std::filesystem::file_size(path, error);
  if (error) return std::nullopt;

  std::vector<std::byte> bytes(size);
  std::ifstream file(path, std::ios::binary);
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): streams read chars.
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  if (!file) return std::nullopt;
  return bytes;
}
