#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "players/mpris/MprisPlayer.h"
#include "tests/support/BusClient.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/MediaFile.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RowName.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

using Value = FakeMprisPlayer::Value;

constexpr auto kTimedOut = -1712;
constexpr auto kNotUnderstood = -1708;
constexpr auto kNoSuchObject = -1728;

Value track(const std::string& title) {
  return Value::dictionary({{"xesam:title", Value::text(title)},
                            {"xesam:artist", Value::texts({"Someone", "Else"})},
                            {"xesam:album", Value::text("Somewhere")},
                            {"mpris:length", Value::int64(215'500'000)}});
}

std::chrono::steady_clock::duration timeOf(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::steady_clock::now() - start;
}

/// A fake player that plays a track, and the stack that reads it.
class AFakePlayerOnTheBus : public testing::Test {
 protected:
  AFakePlayerOnTheBus() {
    fake_.set("Metadata", track("Title"));
    fake_.set("PlaybackStatus", Value::text("Playing"));
    player_ = std::make_unique<MprisPlayer>();
    stack_ = std::make_unique<ScriptedStack>(*player_);
  }

  const SongController& controller() const { return stack_->controller; }
  /// How many players are known to play.
  std::ptrdiff_t playing() const {
    return std::ranges::count(player_->players(), PlayerState::Playing,
                              &PlayerRoster::Player::state);
  }

  PrivateBus bus_;
  ScopedSessionBus session_{bus_.address()};
  FakeMprisPlayer fake_{bus_.address(), "fake"};
  std::unique_ptr<MprisPlayer> player_;
  std::unique_ptr<ScriptedStack> stack_;
};

TEST_F(AFakePlayerOnTheBus, IsReadThroughTheWholeStack) {
  fake_.set("Volume", Value::number(0.33299));
  fake_.set("Position", Value::int64(12'345'011));
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
  EXPECT_THAT(fake_.calls(), ElementsAre("Get Position", "Get Metadata", "Get Volume"));
  fake_.forgetCalls();
  controller().playerState();
  controller().songLyrics();
  controller().running();
  EXPECT_THAT(fake_.calls(), ElementsAre("GetAll", "Get Metadata"));
}

TEST_F(AFakePlayerOnTheBus, ObeysCommands) {
  controller().playback(PlaybackRequest::Pause);
  controller().playback(PlaybackRequest::Play);
  controller().playback(PlaybackRequest::Next);
  controller().playback(PlaybackRequest::Previous);
  controller().setSoundVolume(55);
  EXPECT_THAT(fake_.writes(), ElementsAre(FakeMprisPlayer::Write{"Volume", "d", "0.550000"}));
  for (const auto* method : {"Pause", "Play", "Next", "Previous"}) {
    EXPECT_EQ(fake_.received(method), 1) << method;
  }
}

TEST_F(AFakePlayerOnTheBus, IsNotToldToPlayWhileItPlays) {
  controller().playback(PlaybackRequest::Play);
  EXPECT_EQ(fake_.received("Play"), 0);
}

TEST_F(AFakePlayerOnTheBus, TakesARatingOnlyWhereItListsOne) {
  EXPECT_EQ(stack_->errorNumber("set rating of current track to 80"), kNotUnderstood);
  EXPECT_TRUE(fake_.writes().empty());

  fake_.set("Rating", Value::number(0.4));
  fake_.announce({"Rating"});
  ASSERT_TRUE(eventually([&] { return controller().songInfo().ratings == 40; }));
  EXPECT_EQ(stack_->errorNumber("set rating of current track to 80"), 0);
  EXPECT_THAT(fake_.writes(), ElementsAre(FakeMprisPlayer::Write{"Rating", "d", "0.800000"}));
  EXPECT_EQ(controller().songInfo().ratings, 80);
}

TEST_F(AFakePlayerOnTheBus, WithoutAVolumePlaysAtFullScaleAndTakesNone) {
  fake_.remove("Volume", "org.freedesktop.DBus.Error.InvalidArgs");
  EXPECT_EQ(controller().songInfo().volume, 100);
  EXPECT_EQ(stack_->errorNumber("set sound volume to 5"), kNotUnderstood);
  EXPECT_TRUE(fake_.writes().empty());
}

TEST_F(AFakePlayerOnTheBus, ThatIgnoresAWriteShowsTheVolumeThatItHas) {
  fake_.set("Volume", Value::number(0.4));
  fake_.reactTo("Set Volume", {});
  EXPECT_EQ(stack_->errorNumber("set sound volume to 90"), 0);
  EXPECT_EQ(controller().songInfo().volume, 40);
}

TEST_F(AFakePlayerOnTheBus, ThatRefusesACommandIsNotTakenForGone) {
  fake_.failWith("Next", "org.freedesktop.DBus.Error.Failed");
  fake_.failWith("Get Position", "com.example.Odd");
  EXPECT_EQ(stack_->errorNumber("next track"), kNotUnderstood);
  EXPECT_EQ(controller().playerPosition(), std::nullopt);
  EXPECT_TRUE(controller().running());
}

struct MetadataRow {
  std::string name;
  Value metadata;
  std::string state;
  std::string title;
};

class OddMetadata : public AFakePlayerOnTheBus, public testing::WithParamInterface<MetadataRow> {};

TEST_P(OddMetadata, NeverBreaksTheReading) {
  fake_.set("Metadata", GetParam().metadata);
  EXPECT_EQ(controller().playerState(), GetParam().state);
  EXPECT_EQ(controller().songInfo().title, GetParam().title);
  EXPECT_EQ(controller().songInfo().title, GetParam().title);  // Now the metadata is read alone.
}

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, OddMetadata,
    testing::Values(
        MetadataRow{"Empty", Value::dictionary({}), "stopped", "No Song Playing"},
        MetadataRow{"NoDictionary", Value::text("nothing"), "stopped", "No Song Playing"},
        MetadataRow{"OtherDictionary", Value::array("{ss}", {}), "stopped", "No Song Playing"},
        MetadataRow{"EmptyTexts",
                    Value::dictionary({{"xesam:title", Value::text("")},
                                       {"xesam:url", Value::text("")},
                                       {"mpris:artUrl", Value::text("")}}),
                    "stopped", "No Song Playing"},
        MetadataRow{"TrackIdAlone",
                    Value::dictionary({{"mpris:trackid", Value::objectPath("/noplaylist")}}),
                    "stopped", "No Song Playing"},
        MetadataRow{"LengthAlone", Value::dictionary({{"mpris:length", Value::uint64(5'000'000)}}),
                    "playing", "No Song Playing"},
        MetadataRow{"UrlAlone",
                    Value::dictionary({{"xesam:url", Value::text("http://radio/a%20b")}}),
                    "playing", "a b"},
        MetadataRow{"StrangeEntriesAroundTheTitle",
                    Value::dictionary({{"a", Value::structure({Value::int32(1)})},
                                       {"b", Value::dictionary({{"c", Value::texts({"d"})}})},
                                       {"e", Value::array("y", {Value::byte(1)})},
                                       {"f", Value::variant(Value::variant(Value::byte(2)))},
                                       {"xesam:title", Value::text("Found")},
                                       {"g", Value::array("ao", {})}}),
                    "playing", "Found"}),
    rowName);

struct RefusalRow {
  std::string name;
  std::string call;
  std::string script;
  int error;
};

class ARefusedRead : public AFakePlayerOnTheBus, public testing::WithParamInterface<RefusalRow> {};

TEST_P(ARefusedRead, IsAnAbsentValueWhateverItsErrorIsCalled) {
  for (const auto* name : {"org.freedesktop.DBus.Error.UnknownProperty", "System.Error.ENXIO",
                           "org.freedesktop.DBus.Error.Timeout", "com.example.Odd"}) {
    fake_.failWith(GetParam().call, name);
    EXPECT_EQ(stack_->errorNumber(GetParam().script), GetParam().error) << name;
  }
  EXPECT_TRUE(controller().running());
}

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, ARefusedRead,
    testing::Values(RefusalRow{"Volume", "Get Volume", "get sound volume", 0},
                    RefusalRow{"Position", "Get Position", "player position", 0},
                    RefusalRow{"Status", "Get PlaybackStatus", "play", 0},
                    RefusalRow{"List", "GetAll", "get player state as string", 0},
                    RefusalRow{"Metadata", "Get Metadata", "get lyrics of current track",
                               kNoSuchObject},
                    RefusalRow{"MetadataForArtwork", "Get Metadata",
                               "tell artwork 1 of the current track to raw data", kNoSuchObject}),
    rowName);

TEST_F(AFakePlayerOnTheBus, ThatListsNothingIsReadPropertyByProperty) {
  fake_.failWith("GetAll", "org.freedesktop.DBus.Error.NotSupported");
  EXPECT_EQ(controller().playerState(), "playing");
  EXPECT_EQ(controller().songInfo().title, "Title");
  EXPECT_EQ(stack_->errorNumber("set rating of current track to 80"), kNotUnderstood);
}

TEST_F(AFakePlayerOnTheBus, WithoutATrackTakesNoRating) {
  fake_.set("Rating", Value::number(0.5));
  fake_.set("Metadata", Value::dictionary({}));
  EXPECT_EQ(stack_->errorNumber("set rating of current track to 80"), kNoSuchObject);
  EXPECT_TRUE(fake_.writes().empty());
}

TEST_F(AFakePlayerOnTheBus, TellsItsLengthInAnyNumber) {
  const std::vector<std::pair<Value, std::string>> rows{{Value::byte(200), "0.0002"},
                                                        {Value::int16(3000), "0.003"},
                                                        {Value::int32(2'000'000), "2.0"},
                                                        {Value::uint32(4'000'000'000), "4000.0"},
                                                        {Value::int64(5'000'000'000), "5000.0"},
                                                        {Value::uint64(7'000'001), "7.000001"},
                                                        {Value::number(1.5e6), "1.5"}};
  for (const auto& [length, finish] : rows) {
    fake_.set("Metadata",
              Value::dictionary({{"xesam:title", Value::text("T")}, {"mpris:length", length}}));
    EXPECT_EQ(controller().songInfo().finish, finish);
  }
}

TEST_F(AFakePlayerOnTheBus, IsRatedByItsRatingThenTheUsersThenTheFile) {
  const TemporaryFolder folder;
  const auto file = folder.path() / "rated.flac";
  makeAudio(file, audioFormats().at(1));
  writeTags(file, {.lyrics = "", .rating = "0.2", .cover = ""});
  const auto rated = [&](std::vector<std::pair<std::string, Value>> entries) {
    entries.emplace_back("xesam:title", Value::text("T"));
    entries.emplace_back("xesam:url", Value::text("file://" + file.string()));
    fake_.set("Metadata", Value::dictionary(entries));
    return controller().songInfo().ratings;
  };
  EXPECT_EQ(rated({}), 20);
  EXPECT_EQ(rated({{"xesam:userRating", Value::number(0.4)}}), 40);
  fake_.set("Rating", Value::number(0.6));
  fake_.announce({"Rating"});
  EXPECT_TRUE(eventually([&] { return rated({{"xesam:userRating", Value::number(0.4)}}) == 60; }));
}

TEST_F(AFakePlayerOnTheBus, ShowsTheArtworkAndTheLyricsThatItTells) {
  fake_.set("Metadata",
            Value::dictionary(
                {{"xesam:title", Value::text("T")},
                 {"xesam:asText", Value::text("tra la")},
                 {"mpris:artUrl", Value::text("data:image/gif;base64,R0lGODlhAQABAAAAADs=")}}));
  const auto artwork =
      stack_->runner.run("tell app \"iTunes\" to tell artwork 1 of the current track to raw data");
  ASSERT_TRUE(artwork.result.has_value());
  EXPECT_EQ(artwork.result->data().size(), 14U);
  EXPECT_EQ(controller().songLyrics(), "tra la");
  EXPECT_EQ(controller().songInfo().lyrics, "tra la");
}

TEST_F(AFakePlayerOnTheBus, WithArtworkThatIsNoFileShowsThePlaceholder) {
  const TemporaryFolder folder;
  const auto pipe = folder.path() / "pipe.png";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const auto& url : {"file://" + pipe.string(), "file://" + folder.path().string(),
                          std::string("file:///dev/zero"), std::string("data:image/png;base64,"),
                          std::string("data:"), std::string("http://127.0.0.1:1/cover.png"),
                          std::string("/missing.png"), std::string("gopher://x/y")}) {
    fake_.set("Metadata", Value::dictionary({{"xesam:title", Value::text("T")},
                                             {"mpris:artUrl", Value::text(url)}}));
    EXPECT_EQ(stack_->errorNumber("tell artwork 1 of the current track to raw data"), kNoSuchObject)
        << url;
  }
}

TEST_F(AFakePlayerOnTheBus, ThatHangsIsWaitedForOnceAndFailsAtOnceFromThenOn) {
  controller().songInfo();
  fake_.hang();
  const auto first = timeOf([&] { EXPECT_EQ(stack_->errorNumber("player position"), kTimedOut); });
  EXPECT_GE(first, MprisBus::kDeadline - 10ms);

  const auto rest = timeOf([&] {
    for (int i = 0; i < 20; ++i) {
      EXPECT_EQ(stack_->errorNumber("player position"), kTimedOut);
      EXPECT_EQ(stack_->errorNumber("next track"), kTimedOut);
    }
  });
  EXPECT_LT(rest, MprisBus::kDeadline);
  EXPECT_TRUE(controller().running());

  fake_.resume();
  EXPECT_TRUE(eventually([&] { return controller().songInfo().title == "Title"; }));
  EXPECT_EQ(fake_.received("Next"), 0);
}

TEST_F(AFakePlayerOnTheBus, ThatHangsGivesWayToOneThatAnswers) {
  controller().songInfo();
  FakeMprisPlayer other(bus_.address(), "other");
  other.set("Metadata", track("Other"));
  other.set("PlaybackStatus", Value::text("Paused"));
  other.announce({"PlaybackStatus"});
  ASSERT_TRUE(eventually([&] { return player_->players().size() == 2; }));
  fake_.hang();
  EXPECT_EQ(stack_->errorNumber("player position"), kTimedOut);
  EXPECT_EQ(controller().songInfo().title, "Other");
}

TEST(APlayerThatHangsFromTheStart, FailsAtOnceAndIsListedAsSilent) {
  PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  FakeMprisPlayer fake(bus.address(), "fake");
  fake.set("Metadata", track("Title"));
  fake.hang();
  MprisPlayer player;
  ScriptedStack stack(player);
  const auto time = timeOf([&] { EXPECT_EQ(stack.errorNumber("player position"), kTimedOut); });
  EXPECT_LT(time, MprisBus::kDeadline);
  EXPECT_EQ(fake.received("Get Position"), 0);
  ASSERT_EQ(player.players().size(), 1U);
  EXPECT_TRUE(player.players().front().silent);
  fake.resume();
  EXPECT_TRUE(eventually([&] { return stack.controller.songInfo().title == "Title"; }));
}

TEST_F(AFakePlayerOnTheBus, ThatAnswersLateIsNotConfusedWithItsNextAnswer) {
  controller().songInfo();
  fake_.answerAfter(MprisBus::kDeadline + 100ms);
  EXPECT_EQ(controller().playerPosition(), std::nullopt);
  fake_.answerAfter(0ms);
  fake_.set("Position", Value::int64(7'000'000));
  EXPECT_TRUE(eventually([&] { return controller().playerPosition() == "7.0"; }));
  EXPECT_EQ(controller().songInfo().title, "Title");
}

TEST_F(AFakePlayerOnTheBus, ThatVanishesInMidCallIsNotRunningWithoutAStall) {
  controller().songInfo();
  fake_.vanishDuring("Get Metadata");
  const auto time = timeOf([&] { EXPECT_EQ(controller().songInfo().title, "No Song Playing"); });
  EXPECT_LT(time, MprisBus::kDeadline);
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
  EXPECT_EQ(controller().playerState(), std::nullopt);

  fake_.takeName();
  fake_.vanishDuring("");
  EXPECT_TRUE(eventually([&] { return controller().playerState() == "playing"; }));
}

TEST_F(AFakePlayerOnTheBus, ServesScriptsFromSeveralThreadsAtOnce) {
  controller().songInfo();
  fake_.answerAfter(100ms);
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
  EXPECT_EQ(controller().songInfo().title, "Title");
  FakeMprisPlayer other(bus_.address(), "other");
  other.set("Metadata", track("Other"));
  other.set("PlaybackStatus", Value::text("Playing"));
  other.announce({"PlaybackStatus"});
  ASSERT_TRUE(eventually([&] { return playing() == 2; }));
  EXPECT_EQ(controller().songInfo().title, "Title");

  fake_.set("PlaybackStatus", Value::text("Paused"));
  fake_.announce({"PlaybackStatus"});
  EXPECT_TRUE(eventually([&] { return controller().songInfo().title == "Other"; }));
  other.dropName();
  EXPECT_TRUE(eventually([&] { return controller().songInfo().title == "Title"; }));
}

TEST(APinnedPlayer, IsShownWhateverTheOthersDo) {
  PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  FakeMprisPlayer loud(bus.address(), "loud");
  loud.set("Metadata", track("Loud"));
  loud.set("PlaybackStatus", Value::text("Playing"));
  FakeMprisPlayer quiet(bus.address(), "quiet.instance77");
  quiet.set("Metadata", track("Quiet"));
  quiet.set("PlaybackStatus", Value::text("Paused"));
  MprisPlayer player("quiet");
  const ScriptedStack stack(player);
  EXPECT_EQ(stack.controller.songInfo().title, "Quiet");
  EXPECT_FALSE(MprisPlayer("absent").running());
}

TEST(APlayerThatIsNotRunning, IsNeverStarted) {
  const TemporaryFolder folder;
  const auto mark = folder.path() / "started";
  PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  bus.addActivatableName("org.mpris.MediaPlayer2.sleeping", "/usr/bin/touch " + mark.string());
  MprisPlayer player("sleeping");
  const ScriptedStack stack(player);
  EXPECT_FALSE(stack.controller.running());
  EXPECT_EQ(stack.controller.songInfo().title, "No Song Playing");
  stack.controller.playback(PlaybackRequest::Play);
  EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST(FiftyPlayers, AreListedWithinADeadlineThoughOneHangs) {
  PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  std::vector<std::unique_ptr<FakeMprisPlayer>> fakes;
  for (int i = 0; i < 50; ++i) {
    fakes.push_back(std::make_unique<FakeMprisPlayer>(bus.address(), "fake" + std::to_string(i)));
  }
  fakes[17]->set("Metadata", track("Seventeen"));
  fakes[17]->set("PlaybackStatus", Value::text("Playing"));
  fakes[30]->hang();
  FakeMprisPlayer proxy(bus.address(), "playerctld");
  proxy.set("Metadata", track("Proxy"));
  proxy.set("PlaybackStatus", Value::text("Playing"));

  MprisPlayer player;
  const ScriptedStack stack(player);
  EXPECT_EQ(stack.controller.songInfo().title, "Seventeen");
  EXPECT_EQ(player.players().size(), 50U);
  EXPECT_EQ(proxy.received("GetAll"), 0);
  fakes.clear();
  EXPECT_TRUE(eventually([&] { return !stack.controller.running(); }));
}

TEST(ABus, ThatGoesAwayTakesItsPlayersAlong) {
  PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  FakeMprisPlayer fake(bus.address(), "fake");
  fake.set("Metadata", track("Title"));
  MprisPlayer player;
  const ScriptedStack stack(player);
  EXPECT_EQ(stack.controller.songInfo().title, "Title");
  bus.stop();
  EXPECT_EQ(stack.controller.songInfo().title, "No Song Playing");
  EXPECT_TRUE(eventually([&] { return !stack.controller.running(); }));
  EXPECT_THROW(MprisPlayer(), std::runtime_error);
}

}  // namespace
}  // namespace Corvella
