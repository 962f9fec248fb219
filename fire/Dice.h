#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace Corvella {

/// Chance that is the same for each seed.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : random_(seed) {}

  /// 0..count-1
  std::size_t below(std::size_t count) { return random_() % count; }
  int between(int least, int most) {
    return least + static_cast<int>(below(static_cast<std::size_t>(most - least + 1)));
  }
  /// Once in so many times.
  bool once(std::size_t times) { return below(times) == 0; }
  const auto& of(const auto& choices) { return choices[below(std::size(choices))]; }

 private:
  std::mt19937_64 random_;
};

}  // namespace Corvella
