#include "platform/foundation/NSAppleEventDescriptor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

std::string decimalText(std::int64_t number) {
  std::array<char, 24> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return {digits.data(), end};
}

std::string secondsText(std::chrono::microseconds seconds) {
  const std::int64_t whole = seconds.count() / kMicrosecondsPerSecond;
  std::int64_t fraction = std::abs(seconds.count() % kMicrosecondsPerSecond);

  std::string text = seconds.count() < 0 && whole == 0 ? "-" : "";
  text += decimalText(whole);
  text += '.';
  std::int64_t place = kMicrosecondsPerSecond / 10;
  do {
    text += static_cast<char>('0' + fraction / place);
    fraction %= place;
    place /= 10;
  } while (fraction != 0);
  return text;
}

std::int32_t limited(double number) {
  constexpr double low = std::numeric_limits<std::int32_t>::min();
  constexpr double high = std::numeric_limits<std::int32_t>::max();
  if (std::isnan(number)) return 0;
  return static_cast<std::int32_t>(std::clamp(std::round(number), low, high));
}

std::int32_t numberInText(const std::string& text) {
  const bool spelled = std::any_of(text.begin(), text.end(), [](char c) {
    return c != '-' && c != '.' && (c < '0' || c > '9');  // no infinities, no exponents
  });
  if (spelled) return 0;
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return stop == end && error == std::errc() ? limited(number) : 0;
}

}  // namespace

NSAppleEventDescriptor::NSAppleEventDescriptor(Value value) : value_(std::move(value)) {}

NSAppleEventDescriptor NSAppleEventDescriptor::nullDescriptor() {
  return NSAppleEventDescriptor(std::monostate());
}

NSAppleEventDescriptor NSAppleEventDescriptor::descriptorWithString(std::string text) {
  return NSAppleEventDescriptor(std::move(text));
}

NSAppleEventDescriptor NSAppleEventDescriptor::descriptorWithInt32(std::int32_t number) {
  return NSAppleEventDescriptor(number);
}

NSAppleEventDescriptor NSAppleEventDescriptor::descriptorWithReal(
    std::chrono::microseconds seconds) {
  return NSAppleEventDescriptor(seconds);
}

NSAppleEventDescriptor NSAppleEventDescriptor::descriptorWithBoolean(bool value) {
  return NSAppleEventDescriptor(value);
}

NSAppleEventDescriptor NSAppleEventDescriptor::descriptorWithData(std::vector<std::byte> bytes) {
  return NSAppleEventDescriptor(std::move(bytes));
}

NSAppleEventDescriptor NSAppleEventDescriptor::listDescriptor(
    std::vector<NSAppleEventDescriptor> items) {
  return NSAppleEventDescriptor(std::move(items));
}

std::optional<std::string> NSAppleEventDescriptor::stringValue() const {
  if (const auto* text = std::get_if<std::string>(&value_)) return *text;
  if (const auto* number = std::get_if<std::int32_t>(&value_)) return decimalText(*number);
  if (const auto* seconds = std::get_if<std::chrono::microseconds>(&value_)) {
    return secondsText(*seconds);
  }
  if (const auto* truth = std::get_if<bool>(&value_)) return *truth ? "true" : "false";
  return std::nullopt;
}

std::int32_t NSAppleEventDescriptor::int32Value() const {
  if (const auto* number = std::get_if<std::int32_t>(&value_)) return *number;
  if (const auto* seconds = std::get_if<std::chrono::microseconds>(&value_)) {
    return limited(static_cast<double>(seconds->count()) / kMicrosecondsPerSecond);
  }
  if (const auto* truth = std::get_if<bool>(&value_)) return *truth ? 1 : 0;
  if (const auto* text = std::get_if<std::string>(&value_)) return numberInText(*text);
  return 0;
}

std::span<const std::byte> NSAppleEventDescriptor::data() const {
  if (const auto* bytes = std::get_if<std::vector<std::byte>>(&value_)) return *bytes;
  if (const auto* text = std::get_if<std::string>(&value_)) {
    return std::as_bytes(std::span(*text));
  }
  return {};
}

const NSAppleEventDescriptor* NSAppleEventDescriptor::descriptorAtIndex(std::size_t index) const {
  const auto* items = std::get_if<List>(&value_);
  if (items == nullptr || index < 1 || index > items->size()) return nullptr;
  return &(*items)[index - 1];
}
