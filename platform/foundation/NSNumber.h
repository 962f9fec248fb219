#pragma once

#include <cstdint>

/// A whole number, as the widget keeps its rating.
class NSNumber final {
 public:
  static constexpr NSNumber initWithInt(std::int32_t value) { return NSNumber(value); }

  constexpr std::int64_t integerValue() const { return value_; }

 private:
  constexpr explicit NSNumber(std::int32_t value) : value_(value) {}

  std::int32_t value_;
};
