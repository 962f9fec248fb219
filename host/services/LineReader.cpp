#include "host/services/LineReader.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Corvella {

namespace {

bool mayStartABreak(char byte) {
  return byte == '\n' || byte == '\r' || byte == '\xc2' || byte == '\xe2';
}

/// The length in bytes of the line break at the start of the text; 0 when there is none.
std::size_t breakLength(std::string_view text) {
  constexpr std::array<std::string_view, 6> kBreaks{"\r\n",     "\r",           "\n",
                                                    "\xc2\x85", "\xe2\x80\xa8", "\xe2\x80\xa9"};
  const auto* const found = std::ranges::find_if(
      kBreaks, [text](std::string_view lineBreak) { return text.starts_with(lineBreak); });
  return found == kBreaks.end() ? 0 : found->size();
}

}  // namespace

std::optional<std::string_view> LineReader::next() {
  if (!rest_) return std::nullopt;
  const auto text = *rest_;
  for (const auto* at = std::ranges::find_if(text, mayStartABreak); at != text.end();
       at = std::find_if(at + 1, text.end(), mayStartABreak)) {
    const auto length = static_cast<std::size_t>(at - text.begin());
    const auto skipped = breakLength(text.substr(length));
    if (skipped == 0) continue;
    rest_ = text.substr(length + skipped);
    return text.substr(0, length);
  }
  rest_.reset();
  return text;
}

}  // namespace Corvella
