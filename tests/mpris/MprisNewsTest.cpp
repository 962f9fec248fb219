#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include <gtest/gtest.h>

#include "players/mpris/MprisPlayer.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/PrivateBus.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;

/// A session bus with a paused player on it, and somebody who hears its news.
class NewsOnTheBus : public testing::Test {
 protected:
  NewsOnTheBus() { fake_.show("Title", "Paused"); }

  void connect(const MprisDeadlines& deadlines = kPatience) {
    player_ = std::make_unique<MprisPlayer>("", deadlines, &listener_);
  }
  bool eventuallyTold(PlayerNews news, std::ptrdiff_t times) const {
    return eventually([&] { return listener_.count(news) >= times; });
  }

  /// Deadlines that no player misses, however busy the machine is.
  static constexpr MprisDeadlines kPatience{.call = longestWait, .greeting = longestWait};

  class Listener final : public PlayerNewsListener {
   public:
    void playerNews(PlayerNews told) override {
      const std::lock_guard lock(mutex_);
      news_.push_back(told);
    }
    std::ptrdiff_t count(PlayerNews news) const {
      const std::lock_guard lock(mutex_);
      return std::ranges::count(news_, news);
    }

   private:
    mutable std::mutex mutex_;
    std::vector<PlayerNews> news_;
  };

  PrivateBus bus_;
  ScopedSessionBus session_{bus_.address()};
  FakeMprisPlayer fake_{bus_.address(), "fake"};
  Listener listener_;
  std::unique_ptr<MprisPlayer> player_;
};

TEST_F(NewsOnTheBus, OfAnotherPlayerThatTellsThemTooEarlyAreLookedAtAgain) {
  FakeMprisPlayer other(bus_.address(), "other");
  connect();
  player_->running();          // Waits until both are known.
  fake_.announce("Metadata");  // Changed last, so that it is the one to be shown.
  ASSERT_TRUE(
      eventually([&] { return player_->running() && player_->description().name == "fake"; }));
  const auto before = listener_.count(PlayerNews::Changed);

  other.behave({.hangs = true});
  other.set("PlaybackStatus", "Playing");
  other.announce("PlaybackStatus");
  ASSERT_TRUE(eventuallyTold(PlayerNews::Changed, before + 1));
  player_->running();
  ASSERT_EQ(player_->description().name, "other");
  other.set("PlaybackStatus", "Paused");
  other.behave({});

  EXPECT_TRUE(eventuallyTold(PlayerNews::Changed, before + 2));
}

TEST_F(NewsOnTheBus, OfOneThatCannotAnswerYetWhenItAppearsAreLookedAtAgain) {
  fake_.behave({.hangs = true});
  connect({.call = 1ms, .greeting = longestWait});
  ASSERT_TRUE(eventually([&] { return player_->running(); }));

  fake_.set("PlaybackStatus", "Playing");
  fake_.behave({.errors = {{"Get PlaybackStatus", "org.freedesktop.DBus.Error.UnknownObject"}},
                .failsOnce = true});

  EXPECT_TRUE(eventually([&] { return player_->description().playing; }));
  EXPECT_TRUE(eventuallyTold(PlayerNews::Changed, 1));
}

TEST_F(NewsOnTheBus, OfOneThatAnswersWithWrongTypesAreLookedForAgain) {
  fake_.set("PlaybackStatus", INT64_C(5));
  connect();
  ASSERT_TRUE(player_->running());
  EXPECT_EQ(*player_->playerState(), PlayerState::Stopped);
  fake_.set("PlaybackStatus", "Playing");
  EXPECT_TRUE(eventuallyTold(PlayerNews::Changed, 1));
}

TEST_F(NewsOnTheBus, ThatAreNotToldAreFoundInTheNextAnswer) {
  const auto setLength = [this](std::int64_t microseconds) {
    fake_.setMetadata({{"xesam:title", "Title"}, {"mpris:length", microseconds}});
  };
  setLength(360'100'000);
  connect();
  ASSERT_TRUE(player_->running());
  player_->currentTrack();
  setLength(180'600'000);
  for (int answer = 0; answer < 2; ++answer) {
    player_->currentTrack();
    EXPECT_EQ(listener_.count(PlayerNews::Changed), 1);
  }
}

TEST_F(NewsOnTheBus, OfAPauseAreFoundWhereThePositionStandsStill) {
  fake_.set("PlaybackStatus", "Playing");
  connect();
  ASSERT_TRUE(player_->running());
  fake_.forgetCalls();
  for (int answer = 0; answer < 3; ++answer) player_->playerPosition();
  EXPECT_EQ(fake_.received("Get PlaybackStatus"), 1);  // It waits for a stream.
  EXPECT_EQ(listener_.count(PlayerNews::Halted), 0);

  fake_.set("Position", INT64_C(1));
  fake_.set("PlaybackStatus", "Paused");
  for (int answer = 0; answer < 3; ++answer) player_->playerPosition();
  EXPECT_EQ(fake_.received("Get PlaybackStatus"), 2);
  EXPECT_EQ(listener_.count(PlayerNews::Halted), 1);
}

}  // namespace
}  // namespace Corvella
