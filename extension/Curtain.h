#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "platform/dispatch/Clock.h"
#include "platform/dispatch/RunLoop.h"

namespace Corvella {

/// Keeps the host's picture as it is while the widget reads everything anew. Without it each
/// appearance would show its placeholders for a moment before it shows the track.
///
/// It rises by itself after a while: a player that answers slowly must not make the panel look
/// frozen. Lives on the run loop's thread.
class Curtain {
 public:
  /// When the panel opens there is no picture to keep, and when the player has news there is one,
  /// which is better than the placeholders as long as the player answers at all.
  static constexpr std::chrono::milliseconds kLongestAtOpening{250};
  static constexpr std::chrono::milliseconds kLongestAtNews{2000};

  /// `runLoop` outlives the curtain, and makes a turn when the longest time is over.
  explicit Curtain(RunLoop& runLoop) : runLoop_(runLoop) {}
  ~Curtain() { rise(); }
  Curtain(const Curtain&) = delete;
  Curtain& operator=(const Curtain&) = delete;

  void fall(std::chrono::milliseconds longest);
  void rise();
  bool isDown() const { return end_ && runLoop_.now() < *end_; }

 private:
  /// Does nothing but make the run loop turn.
  class End final : public RunLoop::Timer {
    void fire(Clock::TimePoint /*due*/) override {}
    void invalidate() override {}
  };

  RunLoop& runLoop_;
  std::optional<Clock::TimePoint> end_;
  const std::shared_ptr<End> wakeUp_ = std::make_shared<End>();
};

}  // namespace Corvella
