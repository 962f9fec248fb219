#include <chrono>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/NSTimer.h"
#include "tests/support/ManualClock.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using testing::ElementsAre;
using Seconds = std::chrono::duration<double>;

class ATimer : public testing::Test {
 protected:
  ManualClock clock_;
  std::optional<RunLoop> loop_{clock_};
  std::vector<std::string> log_;

  std::shared_ptr<NSTimer> schedule(Seconds interval, NSTimer::TargetAction action,
                                    bool repeats = true) {
    return NSTimer::scheduledTimerWithTimeInterval(*loop_, interval, std::move(action), repeats);
  }
  void scheduleNote(Seconds interval, const std::string& note) {
    schedule(interval, [this, note](NSTimer&) { log_.push_back(note); });
  }
  void enqueueNote(const std::string& note) {
    dispatch_async(loop_->mainQueue(), [this, note] { log_.push_back(note); });
  }
  void turnAfter(Clock::TimePoint::duration time) {
    clock_.advance(time);
    loop_->runTurn();
  }
};

struct Phase {
  std::string name;
  std::vector<milliseconds> turns;  ///< The time that passes before each.
  milliseconds tickLasts;
  std::vector<milliseconds> ticks;  ///< When a timer of one second fires.
};

TEST_F(ATimer, KeepsItsPhaseAndMakesUpForLostTimeWithOneTick) {
  const std::vector<Phase> rows{{"in time", {999ms, 1ms, 0ms, 999ms, 1ms}, 0ms, {1s, 2s}},
                                {"little late", {1300ms, 699ms, 1ms}, 0ms, {1300ms, 2s}},
                                {"missed some", {4200ms, 0ms, 799ms, 1ms}, 0ms, {4200ms, 5s}},
                                {"missed one exactly", {2s, 0ms, 999ms, 1ms}, 0ms, {2s, 3s}},
                                {"slow tick", {1s, 0ms, 499ms, 1ms}, 2500ms, {1s, 4s}}};
  for (const auto& row : rows) {
    std::vector<milliseconds> ticks;
    const auto timer = schedule(1s, [&, start = clock_.now()](NSTimer&) {
      ticks.push_back(std::chrono::round<milliseconds>(clock_.now() - start));
      clock_.advance(row.tickLasts);
    });
    for (const auto time : row.turns) turnAfter(time);
    EXPECT_EQ(ticks, row.ticks) << row.name;
    timer->invalidate();
  }
}

TEST_F(ATimer, TakesAnOddIntervalAsTheNearestUsableOne) {
  scheduleNote(Seconds(std::numeric_limits<double>::infinity()), "endless");
  scheduleNote(Seconds(0), "zero");
  scheduleNote(Seconds(-1e300), "negative");
  scheduleNote(Seconds(std::numeric_limits<double>::quiet_NaN()), "not a number");

  turnAfter(99us);
  EXPECT_THAT(log_, ElementsAre());
  turnAfter(1us);
  EXPECT_THAT(log_, ElementsAre("zero", "negative", "not a number"));
}

TEST_F(ATimer, TakesItsTurnAmongBlocksAndOtherTimers) {
  scheduleNote(2s, "at 2");
  scheduleNote(1s, "at 1");
  scheduleNote(1s, "at 1 too");
  enqueueNote("block at 0");
  clock_.advance(1s);
  enqueueNote("block at 1");
  clock_.advance(500ms);
  enqueueNote("block at 1.5");

  turnAfter(500ms);

  EXPECT_THAT(log_,
              ElementsAre("block at 0", "block at 1", "at 1", "at 1 too", "block at 1.5", "at 2"));
}

/// Holds the timer that holds it, as a controller does.
struct Target {
  std::shared_ptr<NSTimer> timer;
  ~Target() { timer->invalidate(); }
};

enum class By { Holder, BlockBefore, TickAtTheSameTime, LoopsEnd, OwnTick, OnlyTick };

TEST_F(ATimer, NeverFiresAgainAndReleasesItsTargetAtItsEnd) {
  for (const auto end : {By::Holder, By::BlockBefore, By::TickAtTheSameTime, By::LoopsEnd,
                         By::OwnTick, By::OnlyTick}) {
    SCOPED_TRACE(static_cast<int>(end));
    loop_.emplace(clock_);
    auto target = std::make_shared<Target>();
    const std::weak_ptr<Target> weakTarget = target;
    const auto invalidateBy = [&](By by) {
      if (by == end) weakTarget.lock()->timer->invalidate();
    };
    int ticks = 0;
    const auto tick = [&](NSTimer& timer) {
      ++ticks;
      EXPECT_TRUE(timer.isValid());
      invalidateBy(By::OwnTick);
      EXPECT_FALSE(weakTarget.expired());
    };
    const auto other = [&](NSTimer&) { invalidateBy(By::TickAtTheSameTime); };
    schedule(1s, other, false);
    NSTimer::TargetAction action = [tick, target](NSTimer& timer) { tick(timer); };
    target->timer = schedule(1s, std::move(action), end != By::OnlyTick);
    target.reset();
    dispatch_async(loop_->mainQueue(), [&] { invalidateBy(By::BlockBefore); });

    invalidateBy(By::Holder);
    if (end == By::LoopsEnd) loop_.reset();
    if (loop_) turnAfter(1s);
    EXPECT_TRUE(weakTarget.expired());
    if (loop_) turnAfter(1s);
    EXPECT_EQ(ticks, end == By::OwnTick || end == By::OnlyTick ? 1 : 0);
  }
}

}  // namespace
}  // namespace Corvella
