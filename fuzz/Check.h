#pragma once

#include <cstdio>
#include <cstdlib>

namespace Corvella {

/// Ends the fuzzer with a report when something does not hold for its input.
inline void check(bool holds, const char* claim) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", claim);
  std::abort();
}

}  // namespace Corvella
