#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/NSTimer.h"
#include "tests/support/AtItsEnd.h"
#include "tests/support/ManualClock.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class ARunLoop : public testing::Test {
 protected:
  ManualClock clock_;
  std::vector<int> log_;
  RunLoop loop_{clock_};
  DispatchQueue& queue_ = loop_.mainQueue();

  std::function<void()> note(int number) {
    return [this, number] { log_.push_back(number); };
  }
  static std::shared_ptr<NSTimer> schedule(RunLoop& loop, NSTimer::TargetAction action) {
    return NSTimer::scheduledTimerWithTimeInterval(loop, 1s, std::move(action), true);
  }
};

TEST_F(ARunLoop, RunsBlocksInOrderAndWhatTheyEnqueueInALaterTurn) {
  dispatch_async(queue_, [this] { dispatch_async(queue_, note(3)); });
  dispatch_async(queue_, note(1));
  dispatch_async(queue_, note(2));

  EXPECT_TRUE(log_.empty());
  EXPECT_TRUE(loop_.runTurn());
  EXPECT_THAT(log_, ElementsAre(1, 2));
  EXPECT_TRUE(loop_.runTurn());
  EXPECT_THAT(log_, ElementsAre(1, 2, 3));
  EXPECT_FALSE(loop_.runTurn());
}

TEST_F(ARunLoop, DestroysABlockBeforeTheNextAndTellsItsObserverOfATurnInWhichSomethingRan) {
  loop_.setTurnObserver(note(0));
  loop_.runTurn();
  dispatch_async(queue_, [held = atItsEnd(note(1))] {});
  dispatch_async(queue_, note(2));

  loop_.runTurn();

  EXPECT_THAT(log_, ElementsAre(1, 2, 0));
}

TEST_F(ARunLoop, RunsNothingMoreOnceItIsStoppedFromWithin) {
  dispatch_async(queue_, [this] { loop_.stop(); });
  dispatch_async(queue_, note(1));
  const auto timer = schedule(loop_, [this](NSTimer&) { log_.push_back(2); });
  clock_.advance(1s);
  loop_.run();
  dispatch_async(queue_, [this, held = atItsEnd(note(3))] { log_.push_back(4); });

  EXPECT_THAT(log_, ElementsAre(3));
  EXPECT_FALSE(loop_.runTurn());
  EXPECT_FALSE(timer->isValid());
}

TEST_F(ARunLoop, LetsGoOfAllThatItHoldsWhenItIsDestroyed) {
  auto loop = std::make_unique<RunLoop>(clock_);
  auto& queue = loop->mainQueue();
  // Whatever ends with the loop tries to use it once more.
  const auto useAgain = [&, &ended = *loop](int number) {
    return atItsEnd([&, number] {
      log_.push_back(number);
      dispatch_async(queue, [] { FAIL() << "the loop has ended"; });
      EXPECT_FALSE(schedule(ended, [](NSTimer&) {})->isValid());
    });
  };
  dispatch_async(queue, [held = useAgain(1)] {});
  dispatch_async(queue, [held = useAgain(2)] {});
  const auto timer = schedule(*loop, [held = useAgain(3)](NSTimer&) {});

  std::thread([&] { loop.reset(); }).join();

  EXPECT_THAT(log_, ElementsAre(1, 2, 3));
  EXPECT_FALSE(timer->isValid());
  timer->invalidate();
}

/// The machine's time, which counts how often it is read.
struct CountingClock final : Clock {
  TimePoint now() const override {
    ++readings;
    return SteadyClock().now();
  }

  mutable std::atomic<int> readings = 0;
};

class ARunLoopOnAThreadOfItsOwn : public testing::Test {
 protected:
  CountingClock clock_;
  RunLoop loop_{clock_};
  DispatchQueue& queue_ = loop_.mainQueue();
};

TEST_F(ARunLoopOnAThreadOfItsOwn, IsCurrentThereAndDestroysThereWhatItNoLongerRuns) {
  EXPECT_TRUE(queue_.isCurrent());
  std::vector<bool> current;
  const auto noteCurrent = [&] { current.push_back(queue_.isCurrent()); };
  dispatch_async(queue_, noteCurrent);
  dispatch_async(queue_, [&] { loop_.stop(); });
  dispatch_async(queue_, [held = atItsEnd(noteCurrent)] {});
  std::thread([&] { loop_.run(); }).join();
  EXPECT_THAT(current, ElementsAre(true, true));
  EXPECT_FALSE(queue_.isCurrent());
}

TEST_F(ARunLoopOnAThreadOfItsOwn, RunsTheBlocksOfEveryThreadInThatThreadsOrderUntilItIsStopped) {
  constexpr int blocks = 500;
  std::array<std::vector<int>, 4> log;
  std::thread thread([&] { loop_.run(); });
  std::vector<std::thread> senders;
  for (auto& ofSender : log) {
    senders.emplace_back([&] {
      for (int i = 0; i < blocks; ++i) dispatch_async(queue_, [&, i] { ofSender.push_back(i); });
    });
  }
  for (auto& sender : senders) sender.join();
  dispatch_async(queue_, [&] { loop_.stop(); });
  thread.join();
  for (const auto& ofSender : log) {
    EXPECT_EQ(ofSender.size(), blocks);
    EXPECT_TRUE(std::is_sorted(ofSender.begin(), ofSender.end()));
  }
}

TEST_F(ARunLoopOnAThreadOfItsOwn, SleepsUntilATimerIsDueOrWithoutOneForGood) {
  CountingClock idleClock;
  RunLoop idleLoop(idleClock);
  std::thread idleThread([&] { idleLoop.run(); });
  const auto due = SteadyClock().now() + 50ms;
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(
      loop_, 50ms, [&](NSTimer&) { loop_.stop(); }, false);
  loop_.run();
  idleLoop.stop();
  idleThread.join();

  EXPECT_GE(SteadyClock().now(), due);
  // A few readings belong to scheduling and to each turn. A loop that does not sleep makes
  // thousands.
  EXPECT_LE(clock_.readings, 20);
  EXPECT_LE(idleClock.readings, 20);
}

}  // namespace
}  // namespace Corvella
