#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "platform/dispatch/Clock.h"
#include "scripting/ScriptRunner.h"

namespace Corvella {

/// Passes scripts on and watches whether the player answers them.
///
/// Any thread.
class AnswerWatch final : public ScriptRunner {
 public:
  /// Both outlive the watch.
  AnswerWatch(ScriptRunner& runner, const Clock& clock) : runner_(runner), clock_(clock) {}

  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override;

  /// For how long the player has left a script waiting, or has answered none in time; zero when it
  /// answers.
  Clock::TimePoint::duration silence() const;
  /// Whether a script is running.
  bool isBusy() const;

 private:
  class WatchedScript;

  Clock::TimePoint begin();
  void end(Clock::TimePoint started, std::optional<bool> answered);

  ScriptRunner& runner_;
  const Clock& clock_;
  mutable std::mutex mutex_;
  std::multiset<Clock::TimePoint> running_;          // When they started; under the lock.
  std::optional<Clock::TimePoint> unansweredSince_;  // Under the lock.
};

}  // namespace Corvella
