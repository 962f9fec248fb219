#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/dispatch/GlobalQueue.h"
#include "tests/support/AtItsEnd.h"
#include "tests/support/Eventually.h"

namespace Corvella {
namespace {

class AGlobalQueue : public testing::Test {
 protected:
  std::optional<GlobalQueue> queue_{1};
};

TEST_F(AGlobalQueue, RunsEveryBlockOfEveryThreadOnceAndIsCurrentWithinThemOnly) {
  constexpr int blocks = 500;
  GlobalQueue other;
  std::atomic<int> runs = 0;
  std::vector<std::thread> senders;
  for (int i = 0; i < 4; ++i) {
    senders.emplace_back([&, &queue = *queue_] {
      for (int k = 0; k < blocks; ++k) {
        dispatch_async(queue, [&] { runs += queue.isCurrent() && !other.isCurrent() ? 1 : 0; });
      }
    });
  }
  for (auto& sender : senders) sender.join();
  EXPECT_TRUE(eventually([&] { return runs >= 4 * blocks; }));
  EXPECT_FALSE(queue_->isCurrent());
  queue_.reset();
  EXPECT_EQ(runs, 4 * blocks);
}

TEST_F(AGlobalQueue, RunsFourBlocksAtATimeAndEndsWhenThoseHaveEndedWithoutTheWaitingOnes) {
  std::atomic<int> running = 0;
  std::atomic<bool> mayEnd = false;
  std::atomic<bool> ran = false;
  std::atomic<bool> refused = false;
  for (int i = 0; i < 4; ++i) {
    dispatch_async(*queue_, [&] {
      ++running;
      mayEnd.wait(false);
      --running;
    });
  }
  EXPECT_TRUE(eventually([&] { return running == 4; }));
  const auto useAgain = [&, &queue = *queue_] {
    dispatch_async(queue, [&, held = atItsEnd([&] { refused = true; })] { ran = true; });
  };
  dispatch_async(*queue_, [&, held = atItsEnd(useAgain)] { ran = true; });

  std::thread ending([&] { queue_.reset(); });
  EXPECT_TRUE(eventually([&] { return refused.load(); }));
  mayEnd = true;
  mayEnd.notify_all();
  ending.join();

  EXPECT_EQ(running, 0);
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace Corvella
