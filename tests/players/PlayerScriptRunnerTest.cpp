#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/FakeMusicPlayer.h"
#include "tests/support/ScriptedStack.h"

namespace Corvella {
namespace {

using enum PlaybackRequest;
using testing::ElementsAre;

constexpr auto kNotUnderstood = -1708;
constexpr auto kNoSuchObject = -1728;
constexpr auto kNotPermitted = -1743;
constexpr auto kSyntaxError = -2741;

class AScript : public testing::Test {
 protected:
  /// The error that a whole text ends with.
  NSAppleScriptErrorInformation errorOf(const std::string& text) {
    // A copy without anything behind it, so that a read too far is found.
    const std::vector<char> exact(text.begin(), text.end());
    const auto execution = stack_.runner.run(std::string_view(exact.data(), exact.size()));
    EXPECT_FALSE(execution.result.has_value()) << text;
    const auto error = execution.error.value_or(NSAppleScriptErrorInformation());
    EXPECT_NE(error.message, "") << text;
    return error;
  }

  FakeMusicPlayer player_;
  ScriptedStack stack_{player_};
};

TEST_F(AScript, OfTheSongControllerAsksAndTellsWhatItMeans) {
  const auto& controller = stack_.controller;
  EXPECT_TRUE(controller.running());
  EXPECT_EQ(controller.playerPosition(), "63.5");
  EXPECT_EQ(controller.songInfo(), (SongInfo{"Name", "Artist", "Album", "La la", 60, 35, "215.5"}));
  EXPECT_EQ(controller.songLyrics(), "La la");
  player_.artwork = FakeImageDecoder::picture(9, 8);
  EXPECT_EQ(controller.songArtwork()->width(), 9);
  for (const auto& [state, word] :
       {std::pair(PlayerState::Playing, "playing"), std::pair(PlayerState::Paused, "paused"),
        std::pair(PlayerState::Stopped, "stopped")}) {
    player_.state = state;
    EXPECT_EQ(controller.playerState(), word);
  }
  controller.setSongRating(20);
  controller.setSoundVolume(7);
  for (const auto request : {Play, Pause, Previous, Next}) controller.playback(request);
  EXPECT_EQ(player_.track.rating, 20);
  EXPECT_EQ(player_.volume, 7);
  EXPECT_THAT(player_.requests, ElementsAre(Play, Pause, Previous, Next));
}

TEST_F(AScript, EndsAStreamAtZero) {
  player_.track.finish.reset();
  const auto info = stack_.runner.run(
      "tell app \"iTunes\" to get (name, artist, album, lyrics, rating, finish) of current track");
  EXPECT_EQ(info.result->descriptorAtIndex(6)->stringValue(), "0");
}

TEST_F(AScript, MayVaryInCaseAndBlanksAndPassesNoNumberBeyondThePlayersScale) {
  stack_.runner.run("  TELL\tapp  \"iTunes\"  To SET sound   volume to 101 ");
  EXPECT_EQ(player_.volume, 100);
  EXPECT_EQ(stack_.errorNumber("set rating of current track to -9223372036854775808"), 0);
  EXPECT_EQ(player_.track.rating, 0);
}

TEST_F(AScript, ThatIsMalformedIsToldFromACommandThatNobodyKnows) {
  for (const auto* text : {"", "play", "tell", "tell app to play", "tell app \"iTunes to play",
                           "tell app \"iTunes\\", "tell app \"iTunes\" play"}) {
    EXPECT_EQ(errorOf(text).number, kSyntaxError) << text;
  }
  const std::vector<std::pair<int, std::vector<std::string>>> rows{
      {kSyntaxError,
       {"", "get player state as", "set sound volume to", "set sound volume to loud",
        "set sound volume to 9223372036854775808", "set sound volume to -", "get (name", "play )(",
        "play ;", "play\nquit", std::string("play\0", 5)}},
      {kNotUnderstood,
       {"dance", "get genre of current track", "play again", "set sound volume to 5 6", "playpause",
        "get (artist, name, album, lyrics, rating, finish) of current track"}},
      {kNoSuchObject, {"get rating"}}};
  for (const auto& [number, commands] : rows) {
    for (const auto& command : commands) {
      EXPECT_EQ(errorOf("tell app \"iTunes\" to " + command).number, number) << command;
    }
  }
  EXPECT_TRUE(player_.requests.empty());
}

TEST_F(AScript, TurnsAFailureIntoThePlatformsNumber) {
  for (const auto& [failure, number] : {std::pair(PlayerFailure::NotRunning, -600),
                                        std::pair(PlayerFailure::NoSuchObject, kNoSuchObject),
                                        std::pair(PlayerFailure::NotUnderstood, kNotUnderstood),
                                        std::pair(PlayerFailure::TimedOut, -1712)}) {
    player_.failure = failure;
    for (const std::string command : {"play", "get sound volume", "set sound volume to 5",
                                      "tell artwork 1 of the current track to raw data"}) {
      EXPECT_EQ(errorOf("tell app \"iTunes\" to " + command).number, number) << command;
    }
  }
}

TEST_F(AScript, AddressesNoOtherApplicationWhateverTheCommand) {
  for (const auto& [command, number] :
       {std::pair("play", kNotPermitted), std::pair("dance", kNotPermitted),
        std::pair("tell app \"iTunes\" to running", kNotPermitted),
        std::pair("play (", kSyntaxError)}) {
    const auto error = errorOf(std::string(R"(tell app "Say \"Hi\"" to )") + command);
    EXPECT_EQ(error.number, number) << command;
    EXPECT_EQ(error.appName, "Say \"Hi\"") << command;
  }
  EXPECT_TRUE(player_.requests.empty());
}

TEST(Entitlements, LimitWhatARunnerDoes) {
  using List = NSPropertyList;
  using Entries = List::Dictionary;
  struct Row {
    const char* group;
    const char* command;
    bool allowed;
  };
  for (const auto& row : {Row{"", "running", true},
                          {"", "get player state as string", false},
                          {"playback", "set sound volume to 5", true},
                          {"playback", "next track", true},
                          {"playback", "get lyrics of current track", false},
                          {"playback", "set rating of current track to 20", false},
                          {"library.read-write", "set rating of current track to 20", true},
                          {"library.read-write", "pause", false},
                          {"library.read", "get lyrics of current track", false},
                          {nullptr, "running", false},
                          {nullptr, "dance", false}}) {
    Entries entitlements;
    if (row.group != nullptr) {
      const List group(std::string("com.apple.iTunes.") + row.group);
      const List targets(Entries{{"com.apple.iTunes", List(List::Array{group})}});
      entitlements.emplace("com.apple.security.scripting-targets", targets);
    }
    FakeMusicPlayer player;
    PlayerScriptRunner runner(player, ScriptingTargets::fromEntitlements(List(entitlements)));
    const auto error = runner.run(std::string("tell app \"iTunes\" to ") + row.command).error;
    EXPECT_EQ(error ? error->number : 0, row.allowed ? 0 : kNotPermitted) << row.command;
  }
}

}  // namespace
}  // namespace Corvella
