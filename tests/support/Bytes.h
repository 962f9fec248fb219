#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Corvella {

/// Bytes as text, so that tests can write down what they expect.
inline std::optional<std::string> textOf(const std::optional<std::vector<std::byte>>& bytes) {
  if (!bytes) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

}  // namespace Corvella
