#include <array>
#include <atomic>
#include <chrono>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/NSAppleEventDescriptor.h"
#include "platform/foundation/NSAppleScript.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSTimer.h"
#include "tests/support/Eventually.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::ElementsAre;
using Descriptor = NSAppleEventDescriptor;
using Seconds = std::chrono::duration<double>;

/// Something that does one thing when it is destroyed.
std::shared_ptr<void> atItsEnd(std::function<void()> action) {
  return {nullptr, [action = std::move(action)](void*) { action(); }};
}

constexpr int blocksOfAThread = 500;

/// Has each of four threads enqueue blocks, numbered from 0 on, and waits for the threads.
void enqueueFromFourThreads(DispatchQueue& queue,
                            const std::function<void(std::size_t, int)>& block) {
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < blocksOfAThread; ++i) {
        dispatch_async(queue, [block, thread, i] { block(thread, i); });
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

class ARunLoop : public testing::Test {
 protected:
  ManualClock clock_;
  std::optional<RunLoop> loop_{clock_};
  DispatchQueue& queue_ = loop_->mainQueue();
  std::vector<std::string> log_;

  /// A block, or the action of a timer, that writes an event down.
  auto note(const std::string& event) {
    return [this, event](auto&...) { log_.push_back(event); };
  }
  std::shared_ptr<NSTimer> schedule(Seconds interval, NSTimer::TargetAction action,
                                    bool repeats = true) {
    return NSTimer::scheduledTimerWithTimeInterval(*loop_, interval, std::move(action), repeats);
  }
  void turnAfter(Clock::TimePoint::duration time) {
    clock_.advance(time);
    loop_->runTurn();
  }
};

TEST_F(ARunLoop, RunsOneBlockAfterTheOtherAndWhatTheyEnqueueInALaterTurn) {
  loop_->setTurnObserver(note("turn"));
  EXPECT_FALSE(loop_->runTurn());
  dispatch_async(queue_, [this, held = atItsEnd(note("first ended"))] {
    dispatch_async(queue_, note("later"));
  });
  dispatch_async(queue_, note("second"));

  EXPECT_THAT(log_, ElementsAre());
  EXPECT_TRUE(loop_->runTurn());
  EXPECT_THAT(log_, ElementsAre("first ended", "second", "turn"));
  EXPECT_TRUE(loop_->runTurn());
  EXPECT_THAT(log_, ElementsAre("first ended", "second", "turn", "later", "turn"));
  EXPECT_FALSE(loop_->runTurn());
}

TEST_F(ARunLoop, LetsGoOfAllThatItHoldsWhenItIsDestroyed) {
  // Whatever ends with the loop tries to use it once more.
  const auto useAgain = [this, &loop = *loop_](const std::string& event) {
    return atItsEnd([this, event, &loop] {
      log_.push_back(event);
      dispatch_async(queue_, [] { FAIL() << "the loop has ended"; });
      EXPECT_FALSE(NSTimer::scheduledTimerWithTimeInterval(
                       loop, 1s, [](auto&) {}, true)
                       ->isValid());
    });
  };
  dispatch_async(queue_, [held = useAgain("first block")] {});
  dispatch_async(queue_, [held = useAgain("second block")] {});
  const auto timer = schedule(1s, [held = useAgain("timer")](NSTimer&) {});

  std::thread([this] { loop_.reset(); }).join();

  EXPECT_THAT(log_, ElementsAre("first block", "second block", "timer"));
  EXPECT_FALSE(timer->isValid());
  timer->invalidate();
}

TEST_F(ARunLoop, IsCurrentOnItsThreadAndOnceStoppedDestroysThereWhatItNoLongerRuns) {
  std::vector<bool> current;
  const auto noteCurrent = [&] { current.push_back(queue_.isCurrent()); };
  noteCurrent();
  dispatch_async(queue_, noteCurrent);
  dispatch_async(queue_, [this] { loop_->stop(); });
  dispatch_async(queue_, [run = note("block"), held = atItsEnd(noteCurrent)] { run(); });
  const auto timer = schedule(1s, note("tick"));
  clock_.advance(1s);
  std::thread([this] { loop_->run(); }).join();
  noteCurrent();
  dispatch_async(queue_, [run = note("refused block"), held = atItsEnd(note("end"))] { run(); });

  EXPECT_THAT(current, ElementsAre(true, true, true, false));
  EXPECT_THAT(log_, ElementsAre("end"));
  EXPECT_FALSE(loop_->runTurn());
  EXPECT_FALSE(timer->isValid());
}

TEST_F(ARunLoop, RunsTheBlocksOfEveryThreadInThatThreadsOrderUntilItIsStopped) {
  std::array<int, 4> next{};
  std::thread thread([this] { loop_->run(); });
  enqueueFromFourThreads(queue_, [&](std::size_t sender, int number) {
    if (auto& expected = next.at(sender); number == expected) ++expected;
  });
  dispatch_async(queue_, [this] { loop_->stop(); });
  thread.join();
  EXPECT_THAT(next, testing::Each(blocksOfAThread));
}

/// The machine's time, which counts how often it is read.
struct CountingClock final : Clock {
  TimePoint now() const override {
    ++readings;
    return SteadyClock().now();
  }

  mutable std::atomic<int> readings = 0;
};

TEST(ARunningLoop, SleepsUntilATimerIsDueOrWithoutOneForGood) {
  CountingClock clock;
  CountingClock idleClock;
  RunLoop loop(clock);
  RunLoop idleLoop(idleClock);
  std::thread idleThread([&] { idleLoop.run(); });
  const auto due = SteadyClock().now() + 50ms;
  const auto stop = [&](NSTimer&) { loop.stop(); };
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(loop, 50ms, stop, false);
  loop.run();
  idleLoop.stop();
  idleThread.join();

  EXPECT_GE(SteadyClock().now(), due);
  EXPECT_FALSE(timer->isValid());
  // A few readings belong to scheduling and to each turn. A loop that does not sleep makes
  // thousands.
  EXPECT_LE(clock.readings, 20);
  EXPECT_LE(idleClock.readings, 20);
}

using ATimer = ARunLoop;

struct Phase {
  const char* name;
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
  schedule(Seconds(std::numeric_limits<double>::infinity()), note("endless"));
  schedule(Seconds(0), note("zero"));
  schedule(Seconds(-1e300), note("negative"));
  schedule(Seconds(std::numeric_limits<double>::quiet_NaN()), note("not a number"));
  turnAfter(99us);
  EXPECT_THAT(log_, ElementsAre());
  turnAfter(1us);
  EXPECT_THAT(log_, ElementsAre("zero", "negative", "not a number"));
}

TEST_F(ATimer, TakesItsTurnAmongBlocksAndOtherTimers) {
  schedule(2s, note("at 2"));
  schedule(1s, note("at 1"));
  schedule(1s, note("at 1 too"));
  dispatch_async(queue_, note("block at 0"));
  clock_.advance(1s);
  dispatch_async(queue_, note("block at 1"));
  clock_.advance(500ms);
  dispatch_async(queue_, note("block at 1.5"));

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
    auto tick = [&, target](NSTimer& timer) {
      ++ticks;
      EXPECT_TRUE(timer.isValid());
      invalidateBy(By::OwnTick);
      EXPECT_FALSE(weakTarget.expired());
    };
    schedule(
        1s, [&](NSTimer&) { invalidateBy(By::TickAtTheSameTime); }, false);
    target->timer = schedule(1s, std::move(tick), end != By::OnlyTick);
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

TEST(AGlobalQueue, RunsEveryBlockOfEveryThreadOnceAndIsCurrentWithinThemOnly) {
  std::optional<GlobalQueue> queue{1};
  GlobalQueue other;
  std::atomic<int> runs = 0;
  enqueueFromFourThreads(*queue, [&, &current = *queue](auto, auto) {
    runs += current.isCurrent() && !other.isCurrent() ? 1 : 0;
  });
  EXPECT_TRUE(eventually([&] { return runs >= 4 * blocksOfAThread; }));
  EXPECT_FALSE(queue->isCurrent());
  queue.reset();
  EXPECT_EQ(runs, 4 * blocksOfAThread);
}

TEST(AGlobalQueue, RunsFourBlocksAtATimeAndEndsWhenThoseHaveEndedWithoutTheWaitingOnes) {
  std::optional<GlobalQueue> queue{1};
  std::atomic<int> running = 0;
  std::atomic<bool> mayEnd = false;
  std::atomic<bool> ran = false;
  std::atomic<bool> refused = false;
  const auto useAgain = [&, &ending = *queue] {
    dispatch_async(ending, [&, held = atItsEnd([&] { refused = true; })] { ran = true; });
  };
  for (int i = 0; i < 4; ++i) {
    dispatch_async(*queue, [&, held = atItsEnd(useAgain)] {
      ++running;
      mayEnd.wait(false);
      --running;
    });
  }
  EXPECT_TRUE(eventually([&] { return running == 4; }));
  dispatch_async(*queue, [&, held = atItsEnd(useAgain)] { ran = true; });

  std::thread end([&] { queue.reset(); });
  EXPECT_TRUE(eventually([&] { return refused.load(); }));
  mayEnd = true;
  mayEnd.notify_all();
  end.join();

  EXPECT_EQ(running, 0);
  EXPECT_FALSE(ran);
}

TEST(TwoTexts, AreEqualUpToNormalizationAlone) {
  const auto equal = [](const std::string& left, const std::string& right) {
    EXPECT_EQ(NSString::isEqualToString(left, right), NSString::isEqualToString(right, left));
    return NSString::isEqualToString(left, right);
  };
  EXPECT_TRUE(equal("playing", "playing"));
  EXPECT_TRUE(equal("q\u0307\u0323", "q\u0323\u0307"));
  EXPECT_TRUE(equal("a\u037e", "a;"));  // a Greek question mark
  EXPECT_FALSE(equal("Playing", "playing"));
  EXPECT_FALSE(equal("\ufb01", "fi"));  // a ligature, which is compatible only
  EXPECT_FALSE(equal("", "\u0301"));
  EXPECT_FALSE(equal(std::string("a\0b", 3), std::string("a\0c", 3)));
}

TEST(Lowercase, IsFullAndTheSameInEveryLocale) {
  EXPECT_EQ(NSString::lowercaseString("[INSTRUMENTAL] AZ@ 9"), "[instrumental] az@ 9");
  EXPECT_EQ(NSString::lowercaseString("I\u00c9\u0130"), "i\u00e9i\u0307");
}

TEST(TheNumberAtAStart, IsReadWhateverFollows) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::vector<std::pair<const char*, double>> rows{
      {"215.5", 215.5},     {"-0", -0.0},         {"+7", 7},
      {"12.345 s", 12.345}, {".5", 0.5},          {"5.", 5},
      {"-.5e1x", -5},       {"2E-2", 0.02},       {"1e", 1},
      {"1e+", 1},           {"1,5", 1},           {"1.2.3", 1.2},
      {"0x1p4", 0},         {"1e999", infinity},  {"-1e999", -infinity},
      {" \t\r\n\v\f6", 6},  {"\u00a0\u30004", 4}, {"", 0},
      {"   ", 0},           {"abc", 0},           {".", 0},
      {"- 5", 0},           {"+-5", 0},           {"e5", 0},
      {"\u0665", 0},        {"\xff\xfe", 0},      {"Infinity", 0},
      {"-nan", 0}};
  for (const auto& [text, number] : rows) {
    const double value = NSString::doubleValue(text);
    EXPECT_EQ(value, number) << text;
    EXPECT_EQ(std::signbit(value), std::signbit(number)) << text;
  }
  EXPECT_EQ(NSString::doubleValue(std::string(400, '0') + "1.5"), 1.5);
}

TEST(NumbersInALocaleWithCommas, AreStillReadWithAFullStop) {
  const TemporaryFolder folder;
  folder.write("ascii", "CHARMAP\n<U0000>..<U007F> /x00 ASCII\nEND CHARMAP\n");
  folder.write("commas", "LC_NUMERIC\ndecimal_point \",\"\nEND LC_NUMERIC\n");
  // Made although it says nothing of days, money and the rest.
  Process localedef({"localedef", "--force", "-f", folder.path() / "ascii", "-i",
                     folder.path() / "commas", folder.path() / "test"});
  localedef.wait();
  ASSERT_EQ(setenv("LOCPATH", folder.path().c_str(), 1), 0);
  ASSERT_NE(std::setlocale(LC_NUMERIC, "test"), nullptr) << localedef.errors();
  ASSERT_EQ(std::strtod("1,5", nullptr), 1.5);
  EXPECT_EQ(NSString::doubleValue("1.5"), 1.5);
  EXPECT_EQ(NSString::doubleValue("1,5"), 1.0);
  std::setlocale(LC_ALL, "C");
}

struct ValueRow {
  Descriptor value;
  std::optional<std::string> text;
  std::int32_t number;
};

TEST(ADescriptor, ReadsAsTextAndAsNumber) {
  using Number = std::numeric_limits<std::int32_t>;
  const auto text = &Descriptor::descriptorWithString;
  const auto real = &Descriptor::descriptorWithReal;
  const std::vector<ValueRow> rows{
      {Descriptor::nullDescriptor(), {}, 0},
      {Descriptor::descriptorWithInt32(-7), "-7", -7},
      {Descriptor::descriptorWithBoolean(true), "true", 1},
      {Descriptor::descriptorWithBoolean(false), "false", 0},
      {Descriptor::listDescriptor({text("3")}), {}, 0},
      {Descriptor::descriptorWithData({std::byte(65)}), {}, 0},
      {text("-2.6"), "-2.6", -3},
      {text("99999999999"), "99999999999", Number::max()},
      {text("60 stars"), "60 stars", 0},
      {text("inf"), "inf", 0},
      {text(""), "", 0},
      {real(12'345'011us), "12.345011", 12},
      {real(215s), "215.0", 215},
      {real(1us), "0.000001", 0},
      {real(2500ms), "2.5", 3},
      {real(-30ms), "-0.03", 0},
      {real(microseconds::max()), "9223372036854.775807", Number::max()},
      {real(microseconds::min()), "-9223372036854.775808", Number::min()}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.value.stringValue(), row.text);
    EXPECT_EQ(row.value.int32Value(), row.number) << row.text.value_or("no text");
  }
}

TEST(ErrorInformation, IsOneLineWhateverItHolds) {
  const NSAppleScriptErrorInformation error{
      .number = -600, .message = "a\nb", .briefMessage = "\"q\"\\\x7f", .appName = "Plåyer"};
  EXPECT_EQ(error.description(),
            "{NSAppleScriptErrorAppName = \"Plåyer\"; "
            "NSAppleScriptErrorBriefMessage = \"\\\"q\\\"\\\\\\x7f\"; "
            "NSAppleScriptErrorMessage = \"a\\x0ab\"; NSAppleScriptErrorNumber = -600;}");
}

}  // namespace
}  // namespace Corvella
