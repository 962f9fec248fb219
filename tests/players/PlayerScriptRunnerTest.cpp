#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/ScriptedStack.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using enum PlaybackRequest;
using testing::Return;
using Time = std::optional<std::chrono::microseconds>;

constexpr auto kNotUnderstood = -1708;
constexpr auto kNoSuchObject = -1728;
constexpr auto kNotPermitted = -1743;
constexpr auto kSyntaxError = -2741;

class MockPlayer : public MusicPlayer {
 public:
  MOCK_METHOD(bool, running, (), (override));
  MOCK_METHOD(PlayerAnswer<PlayerState>, playerState, (), (override));
  MOCK_METHOD(PlayerAnswer<Time>, playerPosition, (), (override));
  MOCK_METHOD(PlayerAnswer<int>, soundVolume, (), (override));
  MOCK_METHOD(PlayerAnswer<Done>, setSoundVolume, (int), (override));
  MOCK_METHOD(PlayerAnswer<Track>, currentTrack, (), (override));
  MOCK_METHOD(PlayerAnswer<std::string>, lyricsOfCurrentTrack, (), (override));
  MOCK_METHOD(PlayerAnswer<std::vector<std::byte>>, artworkOfCurrentTrack, (), (override));
  MOCK_METHOD(PlayerAnswer<Done>, setRatingOfCurrentTrack, (int), (override));
  MOCK_METHOD(PlayerAnswer<Done>, perform, (PlaybackRequest), (override));
  MOCK_METHOD(PlayerDescription, description, (), (override));
};

/// A script that may ask or tell the player nothing but what its test names.
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

  testing::StrictMock<MockPlayer> player_;
  ScriptedStack stack_{player_};
};

TEST_F(AScript, OfTheSongControllerAsksAndTellsWhatItMeans) {
  const auto& controller = stack_.controller;
  EXPECT_CALL(player_, running()).WillOnce(Return(true));
  EXPECT_TRUE(controller.running());
  for (const auto& [state, word] :
       {std::pair(PlayerState::Playing, "playing"), std::pair(PlayerState::Paused, "paused"),
        std::pair(PlayerState::Stopped, "stopped")}) {
    EXPECT_CALL(player_, playerState()).WillOnce(Return(state));
    EXPECT_EQ(controller.playerState(), word);
  }
  EXPECT_CALL(player_, playerPosition()).WillOnce(Return(Time(63'500ms)));
  EXPECT_EQ(controller.playerPosition(), "63.5");
  EXPECT_CALL(player_, currentTrack())
      .WillOnce(Return(Track{"Name", "Artist", "Album", "La la", 60, 215'500ms}));
  EXPECT_CALL(player_, soundVolume()).WillOnce(Return(35));
  EXPECT_EQ(controller.songInfo(), (SongInfo{"Name", "Artist", "Album", "La la", 60, 35, "215.5"}));
  EXPECT_CALL(player_, lyricsOfCurrentTrack()).WillOnce(Return(std::string("La la")));
  EXPECT_EQ(controller.songLyrics(), "La la");
  EXPECT_CALL(player_, artworkOfCurrentTrack()).WillOnce(Return(FakeImageDecoder::picture(9, 8)));
  EXPECT_EQ(controller.songArtwork()->width(), 9);
  EXPECT_CALL(player_, setRatingOfCurrentTrack(20)).WillOnce(Return(Done()));
  controller.setSongRating(20);
  EXPECT_CALL(player_, setSoundVolume(7)).WillOnce(Return(Done()));
  controller.setSoundVolume(7);
  for (const auto request : {Play, Pause, Previous, Next}) {
    EXPECT_CALL(player_, perform(request)).WillOnce(Return(Done()));
    controller.playback(request);
  }
}

TEST_F(AScript, EndsAStreamAtZero) {
  EXPECT_CALL(player_, currentTrack()).WillOnce(Return(Track()));
  const auto info = stack_.runner.run(
      "tell app \"iTunes\" to get (name, artist, album, lyrics, rating, finish) of current track");
  EXPECT_EQ(info.result->descriptorAtIndex(6)->stringValue(), "0");
}

TEST_F(AScript, MayVaryInCaseAndBlanksAndPassesNoNumberBeyondThePlayersScale) {
  EXPECT_CALL(player_, setSoundVolume(100)).WillOnce(Return(Done()));
  stack_.runner.run("  TELL\tapp  \"iTunes\"  To SET sound   volume to 101 ");
  EXPECT_CALL(player_, setRatingOfCurrentTrack(0)).WillOnce(Return(Done()));
  EXPECT_EQ(stack_.errorNumber("set rating of current track to -9223372036854775808"), 0);
}

TEST_F(AScript, ThatIsMalformedIsToldFromACommandThatNobodyKnows) {
  EXPECT_CALL(player_, running()).WillOnce(Return(true));
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
}

TEST_F(AScript, TurnsAFailureIntoThePlatformsNumber) {
  for (const auto& [failure, number] : {std::pair(PlayerFailure::NotRunning, -600),
                                        std::pair(PlayerFailure::NoSuchObject, kNoSuchObject),
                                        std::pair(PlayerFailure::NotUnderstood, kNotUnderstood),
                                        std::pair(PlayerFailure::TimedOut, -1712)}) {
    EXPECT_CALL(player_, perform(Play)).WillOnce(Return(failure));
    EXPECT_EQ(stack_.errorNumber("play"), number);
    EXPECT_CALL(player_, soundVolume()).WillOnce(Return(failure));
    EXPECT_EQ(stack_.errorNumber("get sound volume"), number);
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
}

TEST(Entitlements, LimitWhatARunnerDoes) {
  using List = NSPropertyList;
  using Entries = List::Dictionary;
  testing::DefaultValue<PlayerAnswer<Done>>::Set(Done());
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
    testing::NiceMock<MockPlayer> player;
    PlayerScriptRunner runner(player, ScriptingTargets::fromEntitlements(List(entitlements)));
    const auto error = runner.run(std::string("tell app \"iTunes\" to ") + row.command).error;
    EXPECT_EQ(error ? error->number : 0, row.allowed ? 0 : kNotPermitted) << row.command;
  }
}

}  // namespace
}  // namespace Corvella
