#include "players/mpris/track/TagEntries.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>

namespace Corvella {

namespace {

using TagLib::ByteVector;

constexpr bool kLowestFirst = false;  // How TagLib reads a number: not from its highest byte on.

/// Steps through entries with a header of `headerSize` bytes each, of which `sizeOf(header's
/// place)` tells how long the rest of the entry is. There are `count` of them at most.
template <typename SizeOf>
bool hasTooManyEntries(const ByteVector& content, std::uint64_t start, unsigned headerSize,
                       SizeOf sizeOf,
                       std::uint64_t count = std::numeric_limits<std::uint64_t>::max()) {
  std::uint64_t entries = 0;
  for (auto at = start; entries < count && at + headerSize <= content.size();) {
    if (++entries > kMostEntries) return true;
    at += headerSize + sizeOf(static_cast<unsigned>(at));
  }
  return false;
}

}  // namespace

bool hasTooManyApeItems(const ByteVector& content) {
  constexpr unsigned kHeader = 8;
  constexpr unsigned kKindOfValue = 6;  // These bits are zero where the value is a text.
  std::ptrdiff_t parts = 0;
  const auto tooMany = hasTooManyEntries(content, 0, kHeader, [&](unsigned at) -> std::uint64_t {
    const auto key = std::next(content.begin(), std::ptrdiff_t{at} + kHeader);
    const auto keyEnd = std::find(key, content.end(), '\0');
    const auto value = keyEnd == content.end() ? keyEnd : keyEnd + 1;
    const std::ptrdiff_t size = content.toUInt(at, kLowestFirst);
    const auto valueEnd = value + std::min(size, std::distance(value, content.end()));
    const auto isText = (content.toUInt(at + 4, kLowestFirst) & kKindOfValue) == 0;
    if (isText) parts += std::count(value, valueEnd, '\0');
    return static_cast<std::uint64_t>(std::distance(key, valueEnd));
  });
  return tooMany || parts > kMostEntries;
}

bool hasTooManyXiphFields(const ByteVector& content, unsigned start) {
  constexpr unsigned kLength = 4;
  if (content.size() < start + kLength) return false;
  // The name of the program that wrote them, and then the number of the fields.
  const std::uint64_t number = std::uint64_t{start} + kLength + content.toUInt(start, kLowestFirst);
  if (number + kLength > content.size()) return false;
  const auto sizeOf = [&](unsigned at) { return content.toUInt(at, kLowestFirst); };
  return hasTooManyEntries(content, number + kLength, kLength, sizeOf,
                           sizeOf(static_cast<unsigned>(number)));
}

bool hasTooManyMp4Values(const ByteVector& content) {
  constexpr unsigned kHeader = 8;
  return hasTooManyEntries(content, 0, kHeader, [&](unsigned at) {
    return std::max(content.toUInt(at), kHeader) - kHeader;
  });
}

bool hasTooManyInfoChunks(const ByteVector& content) {
  constexpr unsigned kName = 4;
  constexpr unsigned kHeader = 8;
  return hasTooManyEntries(content, kName, kHeader, [&](unsigned at) {
    const std::uint64_t size = content.toUInt(at + kName, kLowestFirst);
    return size + size % 2;
  });
}

}  // namespace Corvella
