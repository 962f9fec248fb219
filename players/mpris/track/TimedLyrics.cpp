#include "players/mpris/track/TimedLyrics.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>

#include "players/mpris/track/UrlText.h"

namespace Corvella {

namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kLineEnds = "\r\n";

struct Line {
  std::string_view content;
  std::string_view end;  ///< "\n", "\r\n", "\r" as in old tags, or nothing after the last line.
};

/// Takes the first line off the text, which is not empty.
Line takeLine(std::string_view& text) {
  const auto length = std::min(text.find_first_of(kLineEnds), text.size());
  const auto end = text.substr(length);
  const std::size_t endLength = end.starts_with("\r\n") ? 2 : std::min<std::size_t>(1, end.size());
  const Line line{text.substr(0, length), end.substr(0, endLength)};
  text.remove_prefix(length + endLength);
  return line;
}

std::string_view withoutLeadingBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::string_view withoutTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// Steps over as many digits as there are, `most` at most, and tells how many.
std::size_t skipDigits(std::string_view text, std::size_t& at, std::size_t most) {
  const std::size_t first = at;
  while (at < text.size() && at - first < most && text[at] >= '0' && text[at] <= '9') ++at;
  return at - first;
}

bool skip(std::string_view text, std::size_t& at, std::string_view anyOf) {
  const bool found = at < text.size() && anyOf.find(text[at]) != npos;
  if (found) ++at;
  return found;
}

enum class Fraction : std::uint8_t { Optional, Required };

/// The length of the time stamp that starts the text; 0 when none does.
std::size_t stampLength(std::string_view text, std::string_view brackets, Fraction fraction) {
  std::size_t at = 0;
  if (!skip(text, at, brackets.substr(0, 1))) return 0;
  if (skipDigits(text, at, 3) == 0) return 0;
  if (!skip(text, at, ":") || skipDigits(text, at, 2) != 2) return 0;
  if (skip(text, at, ".:")) {
    if (skipDigits(text, at, 3) == 0) return 0;
  } else if (fraction == Fraction::Required) {
    return 0;
  }
  return skip(text, at, brackets.substr(1)) ? at : 0;
}

/// The line without the time stamps at its start and the blanks around them; the very same line
/// when it starts with none.
std::string_view withoutLineStamps(std::string_view line) {
  for (;;) {
    const auto stamped = withoutLeadingBlanks(line);
    const auto length = stampLength(stamped, "[]", Fraction::Optional);
    if (length == 0) return line;
    line = withoutLeadingBlanks(stamped.substr(length));
  }
}

/// Where the next time stamp of a word starts, and its length; 0 when there is none. Without a
/// fraction it could as well be a time of day in the lyrics.
std::pair<std::size_t, std::size_t> findWordStamp(std::string_view line) {
  for (auto at = line.find('<'); at != npos; at = line.find('<', at + 1)) {
    const auto length = stampLength(line.substr(at), "<>", Fraction::Required);
    if (length != 0) return {at, length};
  }
  return {line.size(), 0};
}

bool isStamped(std::string_view line) {
  return withoutLineStamps(line).size() != line.size() || findWordStamp(line).second != 0;
}

bool holdsTimeStamp(std::string_view text) {
  while (!text.empty()) {
    if (isStamped(takeLine(text).content)) return true;
  }
  return false;
}

/// Whether the line is one that LRC files hold for programs, such as "[ar:Artist]". Only known
/// names count, because "[Chorus: all]" belongs to the lyrics.
bool describesFile(std::string_view line) {
  constexpr std::array<std::string_view, 20> kNames = {
      "al", "ar", "au",     "by",   "encoding", "hash", "id",   "kana", "la",    "length",
      "lr", "qq", "offset", "sign", "re",       "ti",   "tool", "ve",   "total", "version"};
  line = withoutTrailingBlanks(withoutLeadingBlanks(line));
  if (!line.starts_with('[') || !line.ends_with(']')) return false;
  line.remove_prefix(1);
  return std::any_of(kNames.begin(), kNames.end(),
                     [&](std::string_view name) { return hasScheme(line, name); });
}

/// Appends the line without the time stamps of its words. The blanks around a stamp become one, or
/// none at either end of the line.
void appendWithoutWordStamps(std::string& result, std::string_view line) {
  const std::size_t start = result.size();
  auto [at, length] = findWordStamp(line);
  while (length != 0) {
    result += line.substr(0, at);
    line.remove_prefix(at + length);
    const bool afterBlank = result.size() == start || kBlanks.find(result.back()) != npos;
    if (afterBlank) line = withoutLeadingBlanks(line);
    if (line.empty()) result.resize(withoutTrailingBlanks(result).size());
    std::tie(at, length) = findWordStamp(line);
  }
  result += line;
}

}  // namespace

std::string withoutTimeStamps(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  if (!holdsTimeStamp(text)) return std::string(text);
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const Line line = takeLine(text);
    if (describesFile(line.content)) continue;
    appendWithoutWordStamps(result, withoutLineStamps(line.content));
    result += line.end;
  }
  return result;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == npos;
}

}  // namespace Corvella
