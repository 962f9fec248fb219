#include "platform/foundation/NSString.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <type_traits>

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

namespace {

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

icu::UnicodeString decomposed(std::string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
  const auto utf16 = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
  return U_SUCCESS(status) ? nfd->normalize(utf16, status) : utf16;
}

std::string_view withoutLeadingWhiteSpace(std::string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUTextPointer characters(
      utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
  if (U_FAILURE(status)) return text;
  for (UChar32 next = utext_current32(characters.getAlias()); u_isUWhiteSpace(next);
       next = utext_current32(characters.getAlias())) {
    utext_next32(characters.getAlias());
  }
  return text.substr(static_cast<std::size_t>(utext_getNativeIndex(characters.getAlias())));
}

std::size_t skipDigits(std::string_view text, std::size_t from) {
  while (from < text.size() && isDigit(text[from])) ++from;
  return from;
}

bool hasSign(std::string_view text, std::size_t at) {
  return at < text.size() && (text[at] == '+' || text[at] == '-');
}

/// The longest start of the text that is a number; empty when there is none.
std::string_view leadingNumber(std::string_view text) {
  const std::size_t first = hasSign(text, 0) ? 1 : 0;
  std::size_t end = skipDigits(text, first);
  std::size_t digits = end - first;
  if (end < text.size() && text[end] == '.') {
    const std::size_t fraction = skipDigits(text, end + 1);
    digits += fraction - end - 1;
    end = fraction;
  }
  if (digits == 0) return {};

  if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
    const std::size_t exponent = hasSign(text, end + 1) ? end + 2 : end + 1;
    const std::size_t exponentEnd = skipDigits(text, exponent);
    if (exponentEnd > exponent) end = exponentEnd;
  }
  return text.substr(0, end);
}

struct LocaleDeleter {
  void operator()(locale_t locale) const { freelocale(locale); }
};
using LocaleHandle = std::unique_ptr<std::remove_pointer_t<locale_t>, LocaleDeleter>;

}  // namespace

bool NSString::isEqualToString(std::string_view left, std::string_view right) {
  if (left == right) return true;
  // Some characters beyond ASCII decompose into ASCII, so both sides must be plain.
  if (isAscii(left) && isAscii(right)) return false;
  return decomposed(left) == decomposed(right);
}

std::string NSString::lowercaseString(std::string_view text) {
  std::string result;
  if (isAscii(text)) {
    result.reserve(text.size());
    for (const char c : text) {
      result += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
  }
  icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())))
      .toLower(icu::Locale::getRoot())
      .toUTF8String(result);
  return result;
}

double NSString::doubleValue(std::string_view text) {
  const bool startsPlainly = !text.empty() && (isDigit(text.front()) || hasSign(text, 0));
  const std::string number(leadingNumber(startsPlainly ? text : withoutLeadingWhiteSpace(text)));
  if (number.empty()) return 0.0;
  static const LocaleHandle plain(newlocale(LC_ALL_MASK, "C", nullptr));
  return strtod_l(number.c_str(), nullptr, plain.get());
}
