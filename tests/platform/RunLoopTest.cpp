#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(
      loop_, 1s, [this](NSTimer&) { log_.push_back(2); }, true);
  clock_.advance(1s);

  loop_.run();
  dispatch_async(queue_, [this, held = atItsEnd(note(3))] { log_.push_back(4); });

  EXPECT_THAT(log_, ElementsAre(3));
  EXPECT_FALSE(loop_.runTurn());
  EXPECT_FALSE(timer->isValid());
}

TEST_F(ARunLoop, LetsGoOfAllThatItHoldsWhenItIsDestroyed) {
  auto loop = std::make_unique<RunLoop>(clock_);
  // Whatever ends with the loop tries to use it once more.
  const auto useAgain = [&queue = loop->mainQueue(), &loop = *loop, log = &log_](int number) {
    log->push_back(number);
    dispatch_async(queue, [] { FAIL() << "the loop has ended"; });
    EXPECT_FALSE(NSTimer::scheduledTimerWithTimeInterval(
                     loop, 1s, [](NSTimer&) {}, true)
                     ->isValid());
  };
  dispatch_async(loop->mainQueue(), [held = atItsEnd([=] { useAgain(1); })] {});
  dispatch_async(loop->mainQueue(), [held = atItsEnd([=] { useAgain(2); })] {});
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(
      *loop, 1s, [held = atItsEnd([=] { useAgain(3); })](NSTimer&) {}, true);

  std::thread([&] { loop.reset(); }).join();

  EXPECT_THAT(log_, ElementsAre(1, 2, 3));
  EXPECT_FALSE(timer->isValid());
  timer->invalidate();
}

/// The machine's time, counting how often it is asked for.
class CountingClock final : public Clock {
 public:
  mutable std::atomic<int> readings = 0;

  TimePoint now() const override {
    ++readings;
    return SteadyClock().now();
  }
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
  senders.reserve(log.size());
  for (auto& ofSender : log) {
    senders.emplace_back([&] {
      for (int i = 0; i < blocks; ++i) dispatch_async(queue_, [&, i] { ofSender.push_back(i); });
    });
  }
  for (auto& sender : senders) sender.join();
  std::promise<void> allRun;
  dispatch_async(queue_, [&] { allRun.set_value(); });
  allRun.get_future().wait();
  loop_.stop();
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
  const auto start = clock_.now();
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(
      loop_, 50ms, [&](NSTimer&) { loop_.stop(); }, false);

  loop_.run();

  EXPECT_GE(clock_.now() - start, 50ms);
  // Three here; in the loop, the turn before the sleep and the one after.
  EXPECT_LE(clock_.readings, 3 + 2);
  EXPECT_LE(idleClock.readings, 1);
  idleLoop.stop();
  idleThread.join();
}

}  // namespace
}  // namespace Corvella
