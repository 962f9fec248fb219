#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Corvella {

/// A piece of a script text; `text` points into the script.
struct ScriptToken {
  enum class Kind : std::uint8_t { End, Word, Number, String, Symbol, Malformed };
  Kind kind = Kind::End;
  std::string_view text;  ///< Of a string: what stands between its marks, escapes as written.
};

/// Cuts a script text into words, whole numbers, quoted strings and the symbols ( ) and comma.
class ScriptTokens {
 public:
  explicit ScriptTokens(std::string_view source) : source_(source) {}

  /// The next piece; `End` at the end and again after it.
  ScriptToken next();

  /// What has not been read yet.
  std::string_view rest() const { return source_.substr(position_); }

 private:
  template <typename Predicate>
  ScriptToken takeWhile(ScriptToken::Kind kind, std::size_t first, Predicate belongs);
  ScriptToken takeNumber();
  ScriptToken takeString();

  std::string_view source_;
  std::size_t position_ = 0;
};

}  // namespace Corvella
