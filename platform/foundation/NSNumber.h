#pragma once

#include <cstdint>

/// A number as an object's value; here, a whole one.
class NSNumber final {
 public:
  static constexpr NSNumber initWithInt(std::int32_t value) { return NSNumber(value); }

  constexpr std::int64_t integerValue() const { return value_; }

  friend constexpr bool operator==(const NSNumber&, const NSNumber&) = default;

 private:
  constexpr explicit NSNumber(std::int32_t value) : value_(value) {}

  std::int32_t value_;
};
