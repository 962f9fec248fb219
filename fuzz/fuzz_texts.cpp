// Texts from players and files: comparison, case and numbers, lyrics with time stamps, addresses.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "fuzz/Check.h"
#include "platform/base/Utf8.h"
#include "platform/foundation/NSString.h"
#include "players/mpris/artwork/DataUrl.h"
#include "players/mpris/track/FileUrl.h"
#include "players/mpris/track/TimedLyrics.h"
#include "players/mpris/track/UrlText.h"

namespace Corvella {
namespace {

void checkTextServices(std::string_view text, std::string_view other) {
  check(NSString::isEqualToString(text, text), "a text equals itself");
  check(NSString::isEqualToString(text, other) == NSString::isEqualToString(other, text),
        "both sides count alike");
  const auto small = NSString::lowercaseString(text);
  check(isUtf8(small), "the lowercase form is UTF-8");
  check(NSString::lowercaseString(small) == small, "small letters stay small");

  const double number = NSString::doubleValue(text);
  check(!std::isnan(number), "a number");
  check(NSString::doubleValue(" \u2003" + std::string(text)) == number,
        "leading blanks are skipped");
  // A letter that no number goes on with.
  check(NSString::doubleValue(std::string(text) + "x1") == number, "what follows is ignored");
}

void checkEncodings(std::string_view text) {
  const auto repaired = repairedUtf8(text);
  check(isUtf8(repaired), "repaired text is UTF-8");
  check(!isUtf8(text) || repaired == text, "UTF-8 needs no repair");
  check(isUtf8(textOfFile(std::as_bytes(std::span(text)))), "the text of any file is UTF-8");
}

void checkLyrics(std::string_view text) {
  const auto lyrics = withoutTimeStamps(text);
  check(lyrics.size() <= text.size(), "time stamps are taken off, nothing is added");
  check(!isUtf8(text) || isUtf8(lyrics), "no character is cut");
}

void checkAddresses(const std::string& text) {
  for (const auto& url : {text, "file:" + text, "file://" + text, "file:///" + text}) {
    for (const auto& path : pathsOfFileUrl(url)) {
      check(path.is_absolute(), "a path is absolute");
      check(path.native().find('\0') == std::string::npos, "a path holds no NUL");
    }
    check(isUtf8(baseNameOfUrl(url)), "a base name is UTF-8");
  }
  const auto plain = bytesOfDataUrl("data:," + text);
  check(plain.has_value() == isPercentEncoded(text), "any percent-encoded text is data");
  check(!plain || plain->size() == percentDecoded(text).size(), "data is decoded once");
  const auto packed = bytesOfDataUrl("data:image/png;base64," + text);
  check(!packed || packed->size() <= text.size() / 4 * 3 + 2, "four characters hold three bytes");
  bytesOfDataUrl(text);
}

}  // namespace
}  // namespace Corvella

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const auto half = text.size() / 2;
  Corvella::checkTextServices(std::string_view(text).substr(0, half),
                              std::string_view(text).substr(half));
  Corvella::checkEncodings(text);
  Corvella::checkLyrics(text);
  Corvella::checkAddresses(text);
  return 0;
}
