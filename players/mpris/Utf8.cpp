#include "players/mpris/Utf8.h"

namespace Corvella {

namespace {

unsigned char byteAt(std::string_view bytes, std::size_t index) {
  return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0;
}

/// How the bytes that follow a first byte are bounded (Unicode, table "Well-Formed UTF-8 Byte
/// Sequences"): only the second one depends on the first.
struct Sequence {
  std::size_t length;
  unsigned char secondFrom;
  unsigned char secondTo;
};

Sequence sequenceOf(unsigned char first) {
  if (first < 0x80) return {1, 0, 0};
  if (first < 0xC2) return {0, 0, 0};
  if (first < 0xE0) return {2, 0x80, 0xBF};
  if (first == 0xE0) return {3, 0xA0, 0xBF};
  if (first == 0xED) return {3, 0x80, 0x9F};
  if (first < 0xF0) return {3, 0x80, 0xBF};
  if (first == 0xF0) return {4, 0x90, 0xBF};
  if (first < 0xF4) return {4, 0x80, 0xBF};
  if (first == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

/// The length of the character at the start of the bytes, which are not empty; 0 when there is
/// none.
std::size_t characterLength(std::string_view bytes) {
  const Sequence sequence = sequenceOf(byteAt(bytes, 0));
  if (sequence.length < 2) return sequence.length;
  const unsigned char second = byteAt(bytes, 1);
  if (second < sequence.secondFrom || second > sequence.secondTo) return 0;
  for (std::size_t index = 2; index < sequence.length; ++index) {
    if ((byteAt(bytes, index) & 0xC0U) != 0x80U) return 0;
  }
  return sequence.length;
}

/// Appends the UTF-8 form of a Unicode scalar value.
void appendUtf8(std::string& text, char32_t character) {
  const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
  const auto appendTail = [&](int shift) { append(0x80U | (character >> shift & 0x3FU)); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0U | character >> 6U);
    appendTail(0);
  } else if (character < 0x10000) {
    append(0xE0U | character >> 12U);
    appendTail(6);
    appendTail(0);
  } else {
    append(0xF0U | character >> 18U);
    appendTail(12);
    appendTail(6);
    appendTail(0);
  }
}

std::string textOfUtf16(std::span<const std::byte> bytes, bool littleEndian) {
  const auto unitAt = [&](std::size_t index) -> char32_t {
    const auto first = std::to_integer<char32_t>(bytes[index]);
    const auto second = std::to_integer<char32_t>(bytes[index + 1]);
    return littleEndian ? second << 8U | first : first << 8U | second;
  };
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
    char32_t character = unitAt(index);
    if (character >= 0xD800 && character < 0xE000) {
      const char32_t low = index + 3 < bytes.size() ? unitAt(index + 2) : 0;
      const bool paired = character < 0xDC00 && low >= 0xDC00 && low < 0xE000;
      character = paired ? 0x10000 + ((character - 0xD800) << 10U) + (low - 0xDC00) : 0xFFFD;
      if (paired) index += 2;
    }
    appendUtf8(text, character);
  }
  return text;
}

std::string textOfLatin1(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char byte : bytes) appendUtf8(text, static_cast<unsigned char>(byte));
  return text;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = characterLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

std::string repairedUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const std::size_t length = characterLength(bytes);
    text += length == 0 ? "\xEF\xBF\xBD" : bytes.substr(0, length);
    bytes.remove_prefix(length == 0 ? 1 : length);
  }
  return text;
}

std::string_view withoutByteOrderMark(std::string_view text) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

std::string textOfFile(std::span<const std::byte> bytes) {
  // Any bytes may be read as chars.
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.starts_with("\xFF\xFE")) return textOfUtf16(bytes.subspan(2), true);
  if (text.starts_with("\xFE\xFF")) return textOfUtf16(bytes.subspan(2), false);
  const auto unmarked = withoutByteOrderMark(text);
  return isUtf8(unmarked) ? std::string(unmarked) : textOfLatin1(unmarked);
}

}  // namespace Corvella
