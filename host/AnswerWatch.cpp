#include "host/AnswerWatch.h"

#include <utility>

namespace Corvella {

namespace {

constexpr int kTimedOut = -1712;

/// Whether the player itself has answered; absent when nothing can be told.
std::optional<bool> answeredIn(const NSAppleScriptExecution& execution, bool asksPlayer) {
  if (execution.error && execution.error->number == kTimedOut) return false;
  if (!asksPlayer) return std::nullopt;
  return true;
}

}  // namespace

class AnswerWatch::WatchedScript final : public NSAppleScript {
 public:
  WatchedScript(AnswerWatch& watch, std::unique_ptr<NSAppleScript> script, bool asksPlayer)
      : watch_(watch), script_(std::move(script)), asksPlayer_(asksPlayer) {}

  NSAppleScriptExecution executeAndReturnError() override {
    const auto started = watch_.begin();
    auto execution = script_->executeAndReturnError();
    watch_.end(started, answeredIn(execution, asksPlayer_));
    return execution;
  }

 private:
  AnswerWatch& watch_;
  const std::unique_ptr<NSAppleScript> script_;
  const bool asksPlayer_;
};

std::unique_ptr<NSAppleScript> AnswerWatch::initWithSource(std::string source) {
  // Whether a player runs is known without its help.
  const bool asksPlayer = !source.ends_with(" running");
  const auto started = begin();
  auto script = runner_.initWithSource(std::move(source));
  end(started, std::nullopt);
  if (!script) return nullptr;
  return std::make_unique<WatchedScript>(*this, std::move(script), asksPlayer);
}

Clock::TimePoint::duration AnswerWatch::silence() const {
  const std::lock_guard lock(mutex_);
  auto since = unansweredSince_;
  if (!since && !running_.empty()) since = *running_.begin();
  return since ? clock_.now() - *since : Clock::TimePoint::duration::zero();
}

bool AnswerWatch::isBusy() const {
  const std::lock_guard lock(mutex_);
  return !running_.empty();
}

Clock::TimePoint AnswerWatch::begin() {
  const auto now = clock_.now();
  const std::lock_guard lock(mutex_);
  running_.insert(now);
  return now;
}

void AnswerWatch::end(Clock::TimePoint started, std::optional<bool> answered) {
  const std::lock_guard lock(mutex_);
  running_.erase(running_.find(started));
  if (!answered) return;
  if (*answered) {
    unansweredSince_.reset();
  } else if (!unansweredSince_) {
    unansweredSince_ = started;
  }
}

}  // namespace Corvella
