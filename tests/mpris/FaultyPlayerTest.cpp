#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/FakePlayerOnTheBus.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using Value = FakeMprisPlayer::Value;

constexpr auto kTimedOut = -1712;

std::chrono::steady_clock::duration timeOf(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::steady_clock::now() - start;
}

struct RefusalRow {
  std::string call;
  std::string script;
  int error;
};

TEST_F(AFakePlayerOnTheBus, ThatRefusesAReadHasAnAbsentValueAndIsNotTakenForGone) {
  const std::vector<RefusalRow> rows{{"Next", "next track", kNotUnderstood},
                                     {"Get Volume", "get sound volume", 0},
                                     {"Get Position", "player position", 0},
                                     {"Get PlaybackStatus", "play", 0},
                                     {"GetAll", "get player state as string", 0},
                                     {"Get Metadata", "get lyrics of current track", kNoSuchObject},
                                     {"Get Metadata", kArtwork, kNoSuchObject}};
  for (const auto& [call, script, error] : rows) {
    for (const auto* name : {"org.freedesktop.DBus.Error.UnknownProperty", "System.Error.ENXIO",
                             "org.freedesktop.DBus.Error.Timeout", "com.example.Odd"}) {
      fake_.behave({.errors = {{call, name}}});
      EXPECT_EQ(errorNumber(script), error) << call << ": " << name;
    }
  }
  EXPECT_TRUE(controller().running());
}

TEST_F(AFakePlayerOnTheBus, ThatListsNothingIsReadPropertyByProperty) {
  fake_.behave({.errors = {{"GetAll", "org.freedesktop.DBus.Error.NotSupported"}}});
  EXPECT_EQ(controller().playerState(), "playing");
  EXPECT_EQ(controller().songInfo().title, "Title");
  EXPECT_EQ(errorNumber(kSetRating), kNotUnderstood);
}

TEST_F(AFakePlayerOnTheBus, ThatHangsIsWaitedForOnceAndFailsAtOnceFromThenOn) {
  controller().songInfo();
  fake_.behave({.hangs = true});
  EXPECT_GE(timeOf([&] { EXPECT_EQ(errorNumber("player position"), kTimedOut); }),
            MprisBus::kDeadline - 10ms);

  const auto rest = timeOf([&] {
    for (int i = 0; i < 20; ++i) {
      EXPECT_EQ(errorNumber("player position"), kTimedOut);
      EXPECT_EQ(errorNumber("next track"), kTimedOut);
    }
  });
  EXPECT_LT(rest, MprisBus::kDeadline);
  EXPECT_TRUE(controller().running());

  fake_.behave({});
  EXPECT_TRUE(eventuallyShows("Title"));
  EXPECT_EQ(fake_.received("Next"), 0);
}

TEST_F(ABus, WithAPlayerThatHangsFromTheStartFailsAtOnceAndListsItAsSilent) {
  FakeMprisPlayer fake(bus_.address(), "fake");
  fake.show("Title", "Stopped");
  fake.behave({.hangs = true});
  MprisPlayer player;
  ScriptedStack stack(player);
  const auto time = timeOf([&] { EXPECT_EQ(stack.errorNumber("player position"), kTimedOut); });
  EXPECT_LT(time, MprisBus::kDeadline);
  EXPECT_EQ(fake.received("Get Position"), 0);
  ASSERT_EQ(player.players().size(), 1U);
  EXPECT_TRUE(player.players().front().silent);
  fake.behave({});
  EXPECT_TRUE(eventually([&] { return stack.controller.songInfo().title == "Title"; }));
}

TEST_F(AFakePlayerOnTheBus, ThatAnswersLateIsNotConfusedWithItsNextAnswer) {
  controller().songInfo();
  fake_.behave({.delay = MprisBus::kDeadline + 100ms});
  EXPECT_EQ(controller().playerPosition(), std::nullopt);
  fake_.behave({});
  fake_.set("Position", Value::of("x", std::int64_t{7'000'000}));
  EXPECT_TRUE(eventually([&] { return controller().playerPosition() == "7.0"; }));
  EXPECT_EQ(controller().songInfo().title, "Title");
}

TEST_F(AFakePlayerOnTheBus, ThatVanishesInMidCallIsNotRunningWithoutAStall) {
  controller().songInfo();
  fake_.behave({.vanishesDuring = "Get Metadata"});
  const auto time = timeOf([&] { EXPECT_EQ(controller().songInfo().title, "No Song Playing"); });
  EXPECT_LT(time, MprisBus::kDeadline);
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
  EXPECT_EQ(controller().playerState(), std::nullopt);

  FakeMprisPlayer again(bus_.address(), "fake");
  again.show("Again", "Playing");
  EXPECT_TRUE(eventuallyShows("Again"));
}

TEST_F(AFakePlayerOnTheBus, ServesScriptsFromSeveralThreadsAtOnce) {
  controller().songInfo();
  fake_.behave({.delay = 100ms});
  const auto time = timeOf([&] {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] { EXPECT_EQ(controller().playerPosition(), "0.0"); });
    }
    for (auto& thread : threads) thread.join();
  });
  EXPECT_LT(time, 350ms);  // One after the other takes at least 400 ms.
}

TEST_F(ABus, ListsFiftyPlayersWithinADeadlineThoughOneHangs) {
  std::vector<std::unique_ptr<FakeMprisPlayer>> fakes;
  for (int i = 0; i < 50; ++i) {
    fakes.push_back(std::make_unique<FakeMprisPlayer>(bus_.address(), "fake" + std::to_string(i)));
  }
  fakes[17]->show("Seventeen", "Playing");
  fakes[30]->behave({.hangs = true});
  FakeMprisPlayer proxy(bus_.address(), "playerctld");
  proxy.show("Proxy", "Playing");

  MprisPlayer player;
  const ScriptedStack stack(player);
  EXPECT_EQ(stack.controller.songInfo().title, "Seventeen");
  EXPECT_EQ(player.players().size(), 50U);
  EXPECT_EQ(proxy.received("GetAll"), 0);
  fakes.clear();
  EXPECT_TRUE(eventually([&] { return !stack.controller.running(); }));
}

TEST_F(AFakePlayerOnTheBus, IsGoneWithTheBus) {
  EXPECT_EQ(controller().songInfo().title, "Title");
  bus_.stop();
  EXPECT_EQ(controller().songInfo().title, "No Song Playing");
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
  EXPECT_THROW(MprisPlayer(), std::runtime_error);
}

}  // namespace
}  // namespace Corvella
