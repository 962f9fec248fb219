#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "players/mpris/MprisPlayer.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/MediaFile.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

using Value = FakeMprisPlayer::Value;
using Write = FakeMprisPlayer::Write;
using Entries = std::map<std::string, Value>;

constexpr auto kTimedOut = -1712;
constexpr auto kNotUnderstood = -1708;
constexpr auto kNoSuchObject = -1728;
constexpr auto kArtwork = "tell artwork 1 of the current track to raw data";
constexpr auto kSetRating = "set rating of current track to 80";

std::chrono::steady_clock::duration timeOf(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::steady_clock::now() - start;
}

class ABus : public testing::Test {
 protected:
  PrivateBus bus_;
  ScopedSessionBus session_{bus_.address()};
};

/// A fake player that plays a track, and the stack that reads it.
class AFakePlayerOnTheBus : public ABus {
 protected:
  AFakePlayerOnTheBus() {
    fake_.show("Title", "Playing");
    player_ = std::make_unique<MprisPlayer>();
    stack_ = std::make_unique<ScriptedStack>(*player_);
  }

  const SongController& controller() const { return stack_->controller; }
  int errorNumber(const std::string& command) { return stack_->errorNumber(command); }
  bool eventuallyShows(const std::string& title) const {
    return eventually([&] { return controller().songInfo().title == title; });
  }

  FakeMprisPlayer fake_{bus_.address(), "fake"};
  std::unique_ptr<MprisPlayer> player_;
  std::unique_ptr<ScriptedStack> stack_;
};

TEST_F(AFakePlayerOnTheBus, IsReadThroughTheWholeStack) {
  fake_.set("Volume", Value::of("d", 0.33299));
  fake_.set("Position", Value::of("x", std::int64_t{12'345'011}));
  EXPECT_TRUE(controller().running());
  EXPECT_EQ(controller().playerState(), "playing");
  EXPECT_EQ(controller().playerPosition(), "12.345011");
  EXPECT_EQ(controller().songInfo(),
            (SongInfo{"Title", "Someone, Else", "Somewhere", "", 0, 33, "215.5"}));
}

TEST_F(AFakePlayerOnTheBus, IsAskedOncePerScriptAndOnlyForWhatIsNeeded) {
  controller().songInfo();  // Learns what the player lists.
  fake_.forgetCalls();
  controller().playerPosition();
  controller().songInfo();
  controller().playerState();
  controller().songLyrics();
  controller().running();
  EXPECT_THAT(fake_.calls(),
              ElementsAre("Get Position", "Get Metadata", "Get Volume", "GetAll", "Get Metadata"));
}

TEST_F(AFakePlayerOnTheBus, ObeysCommandsButIsNotToldToPlayWhileItPlays) {
  controller().playback(PlaybackRequest::Play);
  EXPECT_EQ(fake_.received("Play"), 0);
  for (const auto request : {PlaybackRequest::Pause, PlaybackRequest::Play, PlaybackRequest::Next,
                             PlaybackRequest::Previous}) {
    controller().playback(request);
  }
  controller().setSoundVolume(55);
  EXPECT_THAT(fake_.writes(), ElementsAre(Write{"Volume", 0.55}));
  for (const auto* method : {"Pause", "Play", "Next", "Previous"}) {
    EXPECT_EQ(fake_.received(method), 1) << method;
  }
}

TEST_F(AFakePlayerOnTheBus, TakesARatingOnlyWhereItListsOneAndHasATrack) {
  EXPECT_EQ(errorNumber(kSetRating), kNotUnderstood);
  EXPECT_EQ(fake_.received("Set Rating"), 0);

  fake_.set("Rating", Value::of("d", 0.4));
  fake_.announce("Rating");
  ASSERT_TRUE(eventually([&] { return controller().songInfo().ratings == 40; }));
  EXPECT_EQ(errorNumber(kSetRating), 0);
  EXPECT_THAT(fake_.writes(), ElementsAre(Write{"Rating", 0.8}));
  EXPECT_EQ(controller().songInfo().ratings, 80);

  fake_.set("Metadata", Value::dictionary({}));
  EXPECT_EQ(errorNumber(kSetRating), kNoSuchObject);
  EXPECT_EQ(fake_.received("Set Rating"), 1);
}

TEST_F(AFakePlayerOnTheBus, ShowsTheVolumeThatItHasAndTakesNoneWhereItHasNone) {
  EXPECT_EQ(errorNumber("set sound volume to 90"), 0);
  fake_.set("Volume", Value::of("d", 0.4));
  EXPECT_EQ(controller().songInfo().volume, 40);

  fake_.remove("Volume");
  EXPECT_EQ(controller().playerState(), "playing");  // Learns that there is no volume now.
  EXPECT_EQ(controller().songInfo().volume, 100);
  EXPECT_EQ(errorNumber("set sound volume to 5"), kNotUnderstood);
  EXPECT_EQ(fake_.received("Set Volume"), 1);
}

struct MetadataRow {
  std::string name;
  Value metadata;
  std::string state;
  std::string title;
};

TEST_F(AFakePlayerOnTheBus, WithOddMetadataIsReadAllTheSame) {
  const std::string none = "No Song Playing";
  const std::vector<MetadataRow> rows{
      {"no dictionary", Value::text("nothing"), "stopped", none},
      {"another dictionary", Value::of("a{ss}", 0), "stopped", none},
      {"empty texts",
       Value::dictionary({{"xesam:title", Value::text("")}, {"xesam:url", Value::text("")}}),
       "stopped", none},
      {"a track id alone", Value::dictionary({{"mpris:trackid", Value::of("o", "/noplaylist")}}),
       "stopped", none},
      {"a length alone",
       Value::dictionary({{"mpris:length", Value::of("t", std::uint64_t{5'000'000})}}), "playing",
       none},
      {"a url alone", Value::dictionary({{"xesam:url", Value::text("http://radio/a%20b")}}),
       "playing", "a b"},
      {"strange entries around the title",
       Value::dictionary({{"a", Value::of("(i)", 1)},
                          {"b", Value::of("a{sv}", 1, "c", "as", 1, "d")},
                          {"e", Value::of("ay", 1, 1)},
                          {"f", Value::of("v", "v", "y", 2)},
                          {"xesam:title", Value::text("Found")},
                          {"z", Value::of("aao", 0)}}),
       "playing", "Found"}};
  for (const auto& row : rows) {
    fake_.set("Metadata", row.metadata);
    EXPECT_EQ(controller().playerState(), row.state) << row.name;     // Among all properties.
    EXPECT_EQ(controller().songInfo().title, row.title) << row.name;  // Alone.
  }
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

TEST_F(AFakePlayerOnTheBus, TellsItsLengthInAnyNumber) {
  const std::vector<std::pair<Value, std::string>> rows{
      {Value::of("y", 200), "0.0002"},
      {Value::of("n", 3000), "0.003"},
      {Value::of("q", 5000), "0.005"},
      {Value::of("i", 2'000'000), "2.0"},
      {Value::of("u", 4'000'000'000U), "4000.0"},
      {Value::of("x", std::int64_t{5'000'000'000}), "5000.0"},
      {Value::of("t", std::uint64_t{7'000'001}), "7.000001"},
      {Value::of("d", 1.5e6), "1.5"}};
  for (const auto& [length, finish] : rows) {
    fake_.set("Metadata",
              Value::dictionary({{"xesam:title", Value::text("T")}, {"mpris:length", length}}));
    EXPECT_EQ(controller().songInfo().finish, finish);
  }
}

TEST_F(AFakePlayerOnTheBus, IsRatedByItsRatingThenTheUsersThenTheFile) {
  const TemporaryFolder folder;
  const auto file = folder.path() / "rated.flac";
  makeAudio(file, {.lyrics = "", .rating = "0.2", .cover = ""});
  Entries entries{{"xesam:title", Value::text("T")},
                  {"xesam:url", Value::text("file://" + file.string())}};
  const auto rating = [&] {
    fake_.set("Metadata", Value::dictionary(entries));
    return controller().songInfo().ratings;
  };
  EXPECT_EQ(rating(), 20);
  entries.emplace("xesam:userRating", Value::of("d", 0.4));
  EXPECT_EQ(rating(), 40);
  fake_.set("Rating", Value::of("d", 0.6));
  fake_.announce("Rating");
  EXPECT_TRUE(eventually([&] { return rating() == 60; }));
}

TEST_F(AFakePlayerOnTheBus, ShowsTheArtworkAndTheLyricsThatItTells) {
  constexpr auto gif = "data:image/gif;base64,R0lGODlhAQABAAAAADs=";
  fake_.set("Metadata", Value::dictionary({{"xesam:title", Value::text("T")},
                                           {"xesam:asText", Value::text("tra la")},
                                           {"mpris:artUrl", Value::text(gif)}}));
  const auto artwork = stack_->runner.run(std::string("tell app \"iTunes\" to ") + kArtwork);
  ASSERT_TRUE(artwork.result.has_value());
  EXPECT_EQ(artwork.result->data().size(), 14U);
  EXPECT_EQ(controller().songLyrics(), "tra la");
  EXPECT_EQ(controller().songInfo().lyrics, "tra la");

  fake_.set("Metadata", Value::dictionary({{"xesam:title", Value::text("T")},
                                           {"mpris:artUrl", Value::text("/missing.png")}}));
  EXPECT_EQ(errorNumber(kArtwork), kNoSuchObject);
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

TEST_F(AFakePlayerOnTheBus, GivesWayToOneThatPlays) {
  const auto twoPlay = [&] {
    return std::ranges::count(player_->players(), PlayerState::Playing,
                              &PlayerRoster::Player::state) == 2;
  };
  EXPECT_EQ(controller().songInfo().title, "Title");
  auto other = std::make_unique<FakeMprisPlayer>(bus_.address(), "other");
  other->show("Other", "Stopped");
  ASSERT_TRUE(eventually([&] { return other->received("Get PlaybackStatus") == 1; }));
  other->set("PlaybackStatus", Value::text("Playing"));
  other->announce("PlaybackStatus", false);
  ASSERT_TRUE(eventually(twoPlay));
  EXPECT_EQ(controller().songInfo().title, "Title");

  fake_.set("PlaybackStatus", Value::text("Paused"));
  fake_.announce("PlaybackStatus");
  EXPECT_TRUE(eventuallyShows("Other"));
  other.reset();
  EXPECT_TRUE(eventuallyShows("Title"));
}

TEST_F(ABus, ShowsAPinnedPlayerWhateverTheOthersDo) {
  FakeMprisPlayer loud(bus_.address(), "loud");
  loud.show("Loud", "Playing");
  FakeMprisPlayer quiet(bus_.address(), "quiet.instance77");
  quiet.show("Quiet", "Paused");
  MprisPlayer player("quiet");
  EXPECT_EQ(ScriptedStack(player).controller.songInfo().title, "Quiet");
  EXPECT_FALSE(MprisPlayer("absent").running());
}

TEST_F(ABus, IsNeverMadeToStartAPlayer) {
  const TemporaryFolder folder;
  const auto mark = folder.path() / "started";
  bus_.addActivatableName("org.mpris.MediaPlayer2.sleeping", "/usr/bin/touch " + mark.string());
  MprisPlayer player("sleeping");
  const ScriptedStack stack(player);
  EXPECT_FALSE(stack.controller.running());
  EXPECT_EQ(stack.controller.songInfo().title, "No Song Playing");
  stack.controller.playback(PlaybackRequest::Play);
  EXPECT_FALSE(std::filesystem::exists(mark));
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
