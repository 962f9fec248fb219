#include "players/ScriptTokens.h"

namespace Corvella {

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

}  // namespace

ScriptToken ScriptTokens::next() {
  while (position_ < source_.size() && isBlank(source_[position_])) ++position_;
  if (position_ == source_.size()) return {};

  const char first = source_[position_];
  if (isLetter(first)) {
    return takeWhile(ScriptToken::Kind::Word, position_,
                     [](char c) { return isLetter(c) || isDigit(c) || c == '_'; });
  }
  if (isDigit(first) || first == '-') return takeNumber();
  if (first == '"') return takeString();

  const bool symbol = first == '(' || first == ')' || first == ',';
  return {symbol ? ScriptToken::Kind::Symbol : ScriptToken::Kind::Malformed,
          source_.substr(position_++, 1)};
}

template <typename Predicate>
ScriptToken ScriptTokens::takeWhile(ScriptToken::Kind kind, std::size_t first, Predicate belongs) {
  while (position_ < source_.size() && belongs(source_[position_])) ++position_;
  return {kind, source_.substr(first, position_ - first)};
}

ScriptToken ScriptTokens::takeNumber() {
  const std::size_t first = position_;
  if (source_[position_] == '-') ++position_;
  const bool hasDigits = position_ < source_.size() && isDigit(source_[position_]);
  const auto kind = hasDigits ? ScriptToken::Kind::Number : ScriptToken::Kind::Malformed;
  return takeWhile(kind, first, isDigit);
}

ScriptToken ScriptTokens::takeString() {
  const std::size_t first = ++position_;
  while (position_ < source_.size() && source_[position_] != '"') {
    const bool escape = source_[position_] == '\\' && position_ + 1 < source_.size();
    position_ += escape ? 2 : 1;
  }
  if (position_ == source_.size()) return {ScriptToken::Kind::Malformed, source_.substr(first)};
  return {ScriptToken::Kind::String, source_.substr(first, position_++ - first)};
}

}  // namespace Corvella
