#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/FakePlayerOnTheBus.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;

constexpr auto kNotRunning = -600;
constexpr auto kTimedOut = -1712;

TEST_F(AFakePlayerOnTheBus, ThatRefusesAReadHasAnAbsentValueAndIsNotTakenForGone) {
  struct Row {
    const char* call;
    const char* script;
    int error;
  };
  const std::vector<Row> rows{{"Next", "next track", kNotUnderstood},
                              {"Get Volume", "get sound volume", 0},
                              {"Get Position", "player position", 0},
                              {"Get PlaybackStatus", "play", 0},
                              {"Get Metadata", "get lyrics of current track", kNoSuchObject},
                              {"Get Metadata", kArtwork, kNoSuchObject},
                              {"GetAll", "get player state as string", 0}};
  for (const auto& [call, script, error] : rows) {
    for (const auto* name : {"org.freedesktop.DBus.Error.UnknownProperty", "System.Error.ENXIO",
                             "org.freedesktop.DBus.Error.Timeout", "com.example.Odd"}) {
      fake_.behave({.errors = {{call, name}}});
      EXPECT_EQ(errorNumber(script), error) << call << ": " << name;
    }
  }
  // One that lists nothing is read property by property.
  EXPECT_TRUE(controller().running());
  EXPECT_EQ(controller().playerState(), "playing");
  EXPECT_EQ(controller().songInfo().title, "Title");
  EXPECT_EQ(errorNumber(kSetRating), kNotUnderstood);
}

TEST_F(AFakePlayerOnTheBus, ThatHangsFailsAtOnceUntilItAnswersAndItsLateAnswersAreDropped) {
  connect({.call = 300ms, .greeting = longestWait});
  ASSERT_TRUE(eventually([&] { return errorNumber("get sound volume") == 0; }));
  fake_.behave({.hangs = true});
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(errorNumber("player position"), kTimedOut);
    EXPECT_EQ(errorNumber("next track"), kTimedOut);
  }
  EXPECT_TRUE(controller().running());
  EXPECT_LE(fake_.received("Get Position"), 1);
  EXPECT_EQ(fake_.received("Next"), 0);

  fake_.behave({});  // Answers that the position is 0.
  fake_.set("Position", INT64_C(7'000'000));
  std::optional<std::string> position;
  EXPECT_TRUE(eventually([&] { return (position = controller().playerPosition()).has_value(); }));
  EXPECT_EQ(position, "7.0");
  EXPECT_TRUE(eventuallyShows("Title"));
}

TEST_F(AFakePlayerOnTheBus, ThatAnswersInTimeOnlyWhatIsSmallIsSilentUntilItAnswersAll) {
  connect({.call = 300ms, .greeting = longestWait});
  ASSERT_TRUE(eventually([&] { return errorNumber("get sound volume") == 0; }));
  fake_.forgetCalls();
  fake_.behave({.hangsAt = "GetAll"});
  EXPECT_EQ(errorNumber("get player state as string"), kTimedOut);
  EXPECT_TRUE(eventually([&] { return fake_.received("GetAll") == 2; }));  // The probe.
  EXPECT_EQ(errorNumber("player position"), kTimedOut);
  fake_.behave({});
  EXPECT_TRUE(eventually([&] { return !player_->description().silent; }));
}

TEST_F(AFakePlayerOnTheBus, ThatHangsFromTheStartIsListedAsSilentAndNotAsked) {
  fake_.behave({.hangs = true});
  connect({.call = longestWait, .greeting = 100ms});
  EXPECT_EQ(errorNumber("player position"), kTimedOut);
  EXPECT_EQ(fake_.received("Get Position"), 0);
  ASSERT_EQ(player_->candidates().size(), 1U);
  EXPECT_TRUE(player_->candidates().front().silent);
  fake_.behave({});
  EXPECT_TRUE(eventuallyShows("Title"));
}

TEST_F(AFakePlayerOnTheBus, ThatVanishesInMidCallIsNotRunningInsteadOfLate) {
  controller().songInfo();
  fake_.behave({.vanishesDuring = "Get Metadata"});
  EXPECT_EQ(errorNumber("get lyrics of current track"), kNotRunning);
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
  EXPECT_EQ(controller().playerState(), std::nullopt);

  FakeMprisPlayer again(bus_.address(), "fake");
  again.show("Again", "Playing");
  EXPECT_TRUE(eventuallyShows("Again"));
}

TEST_F(AFakePlayerOnTheBus, IsAskedBySeveralThreadsAtOnce) {
  controller().songInfo();
  fake_.behave({.hangs = true});
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] { EXPECT_EQ(controller().playerPosition(), "0.0"); });
  }
  EXPECT_TRUE(eventually([&] { return fake_.received("Get Position") == 4; }));
  fake_.behave({});
}

TEST_F(ABus, WithManyPlayersAsksThemAllAtOnceAndWaitsForNoneThatHangs) {
  stack_.reset();
  player_.reset();
  fake_.behave({.hangs = true});
  std::vector<std::unique_ptr<FakeMprisPlayer>> others;
  for (int i = 0; i < 50; ++i) {
    others.push_back(std::make_unique<FakeMprisPlayer>(bus_.address(), "a" + std::to_string(i)));
    others.back()->behave({.hangs = true});
  }
  FakeMprisPlayer proxy(bus_.address(), "playerctld");
  proxy.show("Proxy", "Playing");
  connect({.call = 100ms, .greeting = longestWait});
  for (const auto& other : others) {
    EXPECT_TRUE(eventually([&] { return other->received("Get PlaybackStatus") == 1; }));
  }
  for (const auto& other : others) other->behave({.hangs = other == others[30]});
  fake_.behave({});
  EXPECT_TRUE(eventuallyShows("Title"));
  EXPECT_EQ(player_->candidates().size(), 51U);
  EXPECT_THAT(proxy.calls(), testing::IsEmpty());
}

TEST_F(AFakePlayerOnTheBus, IsGoneWithTheBus) {
  EXPECT_EQ(controller().songInfo().title, "Title");
  bus_.stop();
  EXPECT_EQ(controller().songInfo().title, "No Song Playing");
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
  EXPECT_THROW(MprisPlayer(), std::runtime_error);
}

TEST_F(AFakePlayerOnTheBus, IsLateWhenTheBusItselfHangsAndNobodyWaitsForSuchABus) {
  connect({.call = 100ms, .greeting = longestWait});
  ASSERT_TRUE(eventually([&] { return errorNumber("get sound volume") == 0; }));
  bus_.freeze();
  // More than there are connections, so that some must be made.
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] { EXPECT_EQ(errorNumber("get sound volume"), kTimedOut); });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_THROW(MprisPlayer("", {.connecting = 100ms}), std::runtime_error);
}

TEST_F(AFakePlayerOnTheBus, IsAskedForItsStatusByOneQuestionAtATime) {
  controller().songInfo();
  fake_.behave({.hangs = true});
  fake_.forgetCalls();
  for (int i = 0; i < 20; ++i) fake_.announce("PlaybackStatus", false);
  fake_.set("PlaybackStatus", "Paused");
  ASSERT_TRUE(eventually([&] { return fake_.received("Get PlaybackStatus") > 0; }));
  // What came before another player has been read once that one is asked.
  FakeMprisPlayer other(bus_.address(), "other");
  ASSERT_TRUE(eventually([&] { return other.received("Get PlaybackStatus") == 1; }));
  EXPECT_EQ(fake_.received("Get PlaybackStatus"), 1);

  fake_.behave({});
  EXPECT_TRUE(
      eventually([&] { return player_->candidates().front().state == PlayerState::Paused; }));
}

}  // namespace
}  // namespace Corvella
