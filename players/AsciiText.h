#pragma once

#include <algorithm>
#include <string_view>

namespace Corvella {

/// The small letter of a capital one, where both are ASCII; any other byte as it is.
constexpr char lowered(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether two texts are the same but for the case of their ASCII letters.
constexpr bool sameText(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return lowered(a) == lowered(b); });
}

}  // namespace Corvella
