#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

/// One answer of a script: a value of some kind, read by asking for the form that is wanted.
///
/// A value type without shared state; may be handed from one thread to another.
class NSAppleEventDescriptor {
 public:
  /// A descriptor without a value: no text, number 0, no bytes, no items.
  static NSAppleEventDescriptor nullDescriptor();
  /// `text` is UTF-8.
  static NSAppleEventDescriptor descriptorWithString(std::string text);
  static NSAppleEventDescriptor descriptorWithInt32(std::int32_t number);
  /// A real number of seconds. Its text is built from integers: at least one and at most six
  /// decimals, a full stop in every locale.
  static NSAppleEventDescriptor descriptorWithReal(std::chrono::microseconds seconds);
  static NSAppleEventDescriptor descriptorWithBoolean(bool value);
  static NSAppleEventDescriptor descriptorWithData(std::vector<std::byte> bytes);
  static NSAppleEventDescriptor listDescriptor(std::vector<NSAppleEventDescriptor> items);

  /// The value as UTF-8 text ("true" and "false" for booleans); absent for lists, raw bytes and no
  /// value.
  std::optional<std::string> stringValue() const;

  /// The value as a number, rounded to the nearest and limited to 32 bits. A text counts when all
  /// of it is a decimal number. 0 when the value is not a number.
  std::int32_t int32Value() const;

  /// The raw bytes, or those of a text. Valid as long as the descriptor; empty for other kinds.
  std::span<const std::byte> data() const;

  /// An item of a list, counted from 1; none beyond the list or when this is no list. Owned by the
  /// list.
  const NSAppleEventDescriptor* descriptorAtIndex(std::size_t index) const;

 private:
  using List = std::vector<NSAppleEventDescriptor>;
  using Value = std::variant<std::monostate, std::string, std::int32_t, std::chrono::microseconds,
                             bool, std::vector<std::byte>, List>;

  explicit NSAppleEventDescriptor(Value value);

  Value value_;
};
