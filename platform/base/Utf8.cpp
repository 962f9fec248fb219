#include "platform/base/Utf8.h"

#include <cstdint>

#include <unicode/stringpiece.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

namespace Corvella {

namespace {

/// ICU counts in 32 bits. Texts are far shorter, because their sources are bounded.
std::int32_t lengthOf(std::string_view text) {
  return static_cast<std::int32_t>(text.size());
}

std::string utf8Of(const icu::UnicodeString& text) {
  std::string result;
  text.toUTF8String(result);
  return result;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  auto status = U_ZERO_ERROR;
  std::int32_t length = 0;
  u_strFromUTF8(nullptr, 0, &length, bytes.data(), lengthOf(bytes), &status);
  // Without a buffer for the result, a text that can be read ends in a buffer overflow.
  return status != U_INVALID_CHAR_FOUND;
}

std::string repairedUtf8(std::string_view bytes) {
  return utf8Of(icu::UnicodeString::fromUTF8(icu::StringPiece(bytes.data(), lengthOf(bytes))));
}

std::string textOfFile(std::span<const std::byte> bytes) {
  // Any bytes may be read as chars.
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  auto status = U_ZERO_ERROR;
  std::int32_t markLength = 0;
  const char* encoding =
      ucnv_detectUnicodeSignature(text.data(), lengthOf(text), &markLength, &status);
  text.remove_prefix(static_cast<std::size_t>(markLength));
  if (encoding == nullptr) encoding = isUtf8(text) ? "UTF-8" : "ISO-8859-1";
  return utf8Of(icu::UnicodeString(text.data(), lengthOf(text), encoding));
}

}  // namespace Corvella
