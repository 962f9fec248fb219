#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Corvella {

/// What a fetch may cost at most.
struct HttpLimits {
  std::size_t bytes = std::size_t{16} << 20U;                ///< Of the body, after decoding.
  std::chrono::milliseconds time = std::chrono::seconds{3};  ///< From the look-up to the last byte.
  long redirects = 3;
};

/// Fetches files from the web. Keeps nothing from one fetch to the next, and sends no cookies and
/// no password, neither of a proxy nor of the address. Immutable; any thread.
class HttpFetcher {
 public:
  explicit HttpFetcher(const HttpLimits& limits = {}) : limits_(limits) {}

  /// The body behind an `http:` or `https:` address; absent on every failure, such as an answer
  /// other than success, a limit passed, a redirect to another scheme, or an address with a user's
  /// name. Blocks for
  /// `HttpLimits::time` at most.
  std::optional<std::vector<std::byte>> fetch(const std::string& url) const;

 private:
  HttpLimits limits_;
};

}  // namespace Corvella
