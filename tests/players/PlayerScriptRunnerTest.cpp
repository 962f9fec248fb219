#include <set>
#include <string>

#include <gmock/gmock.h>

#include "platform/foundation/NSPropertyList.h"
#include "players/PlayerScriptRunner.h"
#include "tests/support/FakeMusicPlayer.h"
#include "tests/support/ScriptedStack.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

ScriptingTargets grantingOnly(const std::set<std::string>& groups) {
  NSPropertyList::Array names;
  for (const auto& group : groups) names.emplace_back("com.apple.iTunes." + group);
  NSPropertyList::Dictionary targets;
  targets.emplace("com.apple.iTunes", NSPropertyList(std::move(names)));
  NSPropertyList::Dictionary entitlements;
  entitlements.emplace("com.apple.security.scripting-targets", NSPropertyList(std::move(targets)));
  return ScriptingTargets::fromEntitlements(NSPropertyList(std::move(entitlements)));
}

class ARunner : public testing::Test {
 protected:
  NSAppleScriptExecution run(const std::string& command) {
    return runner_.run("tell app \"iTunes\" to " + command);
  }
  std::optional<std::string> text(const std::string& command) {
    const auto execution = run(command);
    return execution.result ? execution.result->stringValue() : std::nullopt;
  }
  int errorNumber(const std::string& command) {
    const auto execution = run(command);
    return execution.error ? execution.error->number : 0;
  }

  FakeMusicPlayer player_;
  PlayerScriptRunner runner_{player_, shippedTargets()};
};

TEST_F(ARunner, SpellsStatesOutAndEndsAStreamAtZero) {
  for (const auto& [state, word] :
       {std::pair(PlayerState::Playing, "playing"), std::pair(PlayerState::Paused, "paused"),
        std::pair(PlayerState::Stopped, "stopped")}) {
    player_.state = state;
    EXPECT_EQ(text("get player state as string"), word);
  }
  player_.track.finish.reset();
  const auto stream =
      run("get (name, artist, album, lyrics, rating, finish) of current track").result;
  EXPECT_EQ(stream->descriptorAtIndex(6)->stringValue(), "0");
}

TEST_F(ARunner, PassesCommandsOnWithinThePlayersScale) {
  for (const auto* command : {"play", "pause", "previous track", "next track"}) run(command);
  EXPECT_THAT(player_.requests, ElementsAre(PlaybackRequest::Play, PlaybackRequest::Pause,
                                            PlaybackRequest::Previous, PlaybackRequest::Next));
  run("set sound volume to 101");
  EXPECT_EQ(player_.volume, 100);
  run("set rating of current track to -9000000000");
  EXPECT_EQ(player_.track.rating, 0);
}

TEST_F(ARunner, TurnsFailuresIntoThePlatformsNumbers) {
  EXPECT_EQ(errorNumber("get rating"), -1728);
  EXPECT_EQ(errorNumber("dance"), -1708);
  EXPECT_EQ(errorNumber("get player state as"), -2741);

  const std::vector<std::pair<PlayerFailure, int>> rows{{PlayerFailure::NotRunning, -600},
                                                        {PlayerFailure::NoSuchObject, -1728},
                                                        {PlayerFailure::NotUnderstood, -1708},
                                                        {PlayerFailure::TimedOut, -1712}};
  for (const auto& [failure, number] : rows) {
    player_.failure = failure;
    for (const auto* command : {"play", "get sound volume", "set sound volume to 5",
                                "tell artwork 1 of the current track to raw data"}) {
      EXPECT_EQ(errorNumber(command), number) << command;
      EXPECT_FALSE(run(command).result.has_value()) << command;
    }
  }
}

TEST_F(ARunner, AddressesNoOtherApplicationWhateverTheCommand) {
  for (const auto& [command, number] :
       {std::pair("play", -1743), std::pair("dance", -1743),
        std::pair("tell app \"iTunes\" to running", -1743), std::pair("play (", -2741)}) {
    const auto execution = runner_.run(std::string("tell app \"Finder\" to ") + command);
    ASSERT_TRUE(execution.error.has_value()) << command;
    EXPECT_EQ(execution.error->number, number) << command;
    EXPECT_EQ(execution.error->appName, "Finder") << command;
  }
  EXPECT_TRUE(player_.requests.empty());
}

TEST(Entitlements, LimitWhatARunnerDoes) {
  struct Row {
    std::set<std::string> groups;
    const char* command;
    bool allowed;
  };
  const std::vector<Row> rows{
      {{}, "running", true},
      {{}, "get player state as string", false},
      {{"playback"}, "set sound volume to 5", true},
      {{"playback"}, "next track", true},
      {{"playback"}, "get lyrics of current track", false},
      {{"playback"}, "set rating of current track to 20", false},
      {{"library.read-write"}, "set rating of current track to 20", true},
      {{"library.read-write"}, "pause", false},
      {{"library.read"}, "get lyrics of current track", false},
  };
  for (const auto& row : rows) {
    FakeMusicPlayer player;
    PlayerScriptRunner runner(player, grantingOnly(row.groups));
    const auto execution = runner.run(std::string("tell app \"iTunes\" to ") + row.command);
    EXPECT_EQ(!execution.error.has_value(), row.allowed) << row.command;
  }
  FakeMusicPlayer player;
  const NSPropertyList empty{NSPropertyList::Dictionary()};
  PlayerScriptRunner nothing(player, ScriptingTargets::fromEntitlements(empty));
  for (const auto* command : {"running", "dance"}) {
    EXPECT_EQ(nothing.run(std::string("tell app \"iTunes\" to ") + command).error->number, -1743);
  }
}

TEST_F(ARunner, UnderstandsEveryTextThatTheSongControllerSends) {
  const ScriptedStack stack(player_);
  const auto& controller = stack.controller;

  EXPECT_TRUE(controller.running());
  EXPECT_EQ(controller.playerState(), "paused");
  EXPECT_EQ(controller.playerPosition(), "63.5");
  EXPECT_EQ(controller.songInfo(), (SongInfo{"Name", "Artist", "Album", "La la", 60, 35, "215.5"}));
  EXPECT_EQ(controller.songLyrics(), "La la");
  player_.artwork = FakeImageDecoder::picture(9, 8);
  EXPECT_EQ(controller.songArtwork()->width(), 9);
  controller.setSongRating(20);
  controller.setSoundVolume(7);
  controller.playback(PlaybackRequest::Next);
  EXPECT_EQ(player_.track.rating, 20);
  EXPECT_EQ(player_.volume, 7);
  EXPECT_THAT(player_.requests, ElementsAre(PlaybackRequest::Next));
}

}  // namespace
}  // namespace Corvella
