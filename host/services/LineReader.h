#pragma once

#include <optional>
#include <string_view>

namespace Corvella {

/// Reads a UTF-8 text line by line, and so says where texts break: at a line feed, a carriage
/// return, the two in this order as one, U+0085, U+2028 and U+2029. What is measured, drawn and
/// printed is read by it, so that all three have the same lines. Any thread.
class LineReader {
 public:
  /// The text must outlive what is read of it.
  explicit LineReader(std::string_view text) : rest_(text) {}

  /// The next line, without the break at its end; absent after the last one. An empty text is one
  /// empty line, and a break at the very end of a text is followed by an empty line.
  std::optional<std::string_view> next();

 private:
  std::optional<std::string_view> rest_;
};

}  // namespace Corvella
