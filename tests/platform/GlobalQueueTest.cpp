#include <atomic>
#include <future>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/dispatch/GlobalQueue.h"
#include "tests/support/AtItsEnd.h"
#include "tests/support/Eventually.h"

namespace Corvella {
namespace {

/// A queue of four threads, with blocks that run until told to end.
class AGlobalQueue : public testing::Test {
 protected:
  std::atomic<int> running_ = 0;
  std::atomic<bool> mayEnd_ = false;
  std::optional<GlobalQueue> queue_{1};

  void TearDown() override { letLongBlocksEnd(); }

  void enqueueLongBlock() {
    dispatch_async(*queue_, [this] {
      ++running_;
      mayEnd_.wait(false);
      --running_;
    });
  }
  void letLongBlocksEnd() {
    mayEnd_ = true;
    mayEnd_.notify_all();
  }
};

TEST_F(AGlobalQueue, IsCurrentWithinItsBlocksOnly) {
  GlobalQueue other;
  std::promise<std::pair<bool, bool>> current;

  dispatch_async(*queue_, [&] { current.set_value({queue_->isCurrent(), other.isCurrent()}); });

  EXPECT_EQ(current.get_future().get(), std::pair(true, false));
  EXPECT_FALSE(queue_->isCurrent());
  queue_.reset();  // The promise is in use until the block has ended.
}

TEST_F(AGlobalQueue, RunsEveryBlockOfEveryThreadOnce) {
  constexpr int blocks = 500;
  std::atomic<int> runs = 0;
  std::vector<std::thread> senders;
  senders.reserve(4);
  for (int i = 0; i < 4; ++i) {
    senders.emplace_back([&] {
      for (int k = 0; k < blocks; ++k) dispatch_async(*queue_, [&] { ++runs; });
    });
  }
  for (auto& sender : senders) sender.join();

  EXPECT_TRUE(eventually([&] { return runs >= 4 * blocks; }));
  queue_.reset();
  EXPECT_EQ(runs, 4 * blocks);
}

TEST_F(AGlobalQueue, RunsFourBlocksAtATimeAndEndsWhenThoseHaveEndedWithoutTheWaitingOnes) {
  std::atomic<bool> ran = false;
  std::atomic<bool> refused = false;
  for (int i = 0; i < 4; ++i) enqueueLongBlock();
  ASSERT_TRUE(eventually([&] { return running_ == 4; }));
  const auto useAgain = [&, &queue = *queue_] {
    dispatch_async(queue, [&, held = atItsEnd([&] { refused = true; })] { ran = true; });
  };
  dispatch_async(*queue_, [&, held = atItsEnd(useAgain)] { ran = true; });

  std::thread ending([&] { queue_.reset(); });
  EXPECT_TRUE(eventually([&] { return refused.load(); }));
  letLongBlocksEnd();
  ending.join();

  EXPECT_EQ(running_, 0);
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace Corvella
