#pragma once

#include <cstdint>
#include <utility>
#include <variant>

namespace Corvella {

/// Why a player did not do what it was asked.
enum class PlayerFailure : std::uint8_t {
  NotRunning,     ///< There is no player.
  NoSuchObject,   ///< No current track.
  NotUnderstood,  ///< This player cannot do that.
  TimedOut,       ///< The player did not answer in time.
};

/// What a command answers when it succeeds.
struct Done {};

/// A player's answer: a value or the reason why there is none.
template <typename Value>
class PlayerAnswer {
 public:
  // Implicit, so that a player returns a value or a failure as it stands.
  PlayerAnswer(Value value) : content_(std::move(value)) {}
  PlayerAnswer(PlayerFailure failure) : content_(failure) {}

  explicit operator bool() const { return std::holds_alternative<Value>(content_); }

  /// Only when there is a value.
  Value& operator*() { return std::get<Value>(content_); }
  const Value& operator*() const { return std::get<Value>(content_); }
  Value* operator->() { return &std::get<Value>(content_); }
  const Value* operator->() const { return &std::get<Value>(content_); }

  /// Only when there is none.
  PlayerFailure failure() const { return std::get<PlayerFailure>(content_); }

 private:
  std::variant<Value, PlayerFailure> content_;
};

}  // namespace Corvella
