#include <atomic>
#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>

#include "players/embedded/EmbeddedPlayer.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMusicPlayer.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ScriptedStack.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;
using enum PlaybackRequest;
using enum PlayerState;
using testing::ElementsAre;

// Not a whole number of rounds of any list here.
constexpr auto kAWhile = 3'607s;

EmbeddedTrack track(const std::string& name, microseconds finish, const std::string& cover = "") {
  return {Track{name, "artist", "album", "lyrics of " + name, 20, finish}, cover};
}

const NSBundle kResources{CORVELLA_RESOURCES};

/// A player of three tracks that last a minute together.
class AnEmbeddedPlayer : public testing::Test {
 protected:
  ManualClock clock_;
  const std::vector<EmbeddedTrack> aMinute_{track("A", 10s), track("B", 20s), track("C", 30s)};
  std::optional<EmbeddedPlayer> player_{std::in_place, clock_, kResources, aMinute_};
};

/// Time that passes, or what the player is asked for.
using Step = std::variant<Clock::TimePoint::duration, PlaybackRequest>;

struct Story {
  std::string name;
  std::vector<Step> steps;
  std::string track;
  microseconds position;
  PlayerState state = Playing;
};

TEST_F(AnEmbeddedPlayer, IsWhereClockAndRequestsPutIt) {
  const std::vector<Story> stories{
      {"just before an end", {10s - 1us}, "A", 10s - 1us},
      {"at an end", {10s}, "B", 0s},
      {"past several ends", {31s}, "C", 1s},
      {"past the last end", {64s}, "A", 4s},
      {"days asleep", {24h * 9 + 35s}, "C", 5s},
      {"days asleep after a skip", {4s, Next, 24h + 55s}, "A", 5s},
      {"paused before an end", {10s - 1us, Pause, Pause, kAWhile}, "A", 10s - 1us, Paused},
      {"paused at an end", {10s, Pause, kAWhile}, "B", 0s, Paused},
      {"played again", {4s, Pause, kAWhile, Play, Play, 1s}, "A", 5s},
      {"forward", {4s, Next, 1s}, "B", 1s},
      {"forward past the last", {4s, Next, Next, Next, 1s}, "A", 1s},
      {"forward while paused", {4s, Pause, Next, kAWhile}, "B", 0s, Paused},
      {"back past the first", {4s, Previous, 1s}, "C", 1s},
      {"back from the middle of a track", {20s, Previous}, "A", 0s},
      {"back while paused", {4s, Pause, Previous, kAWhile}, "C", 0s, Paused}};
  for (const auto& story : stories) {
    SCOPED_TRACE(story.name);
    player_.emplace(clock_, kResources, aMinute_);
    for (const auto& step : story.steps) {
      if (const auto* request = std::get_if<PlaybackRequest>(&step)) {
        EXPECT_TRUE(player_->perform(*request));
      } else {
        clock_.advance(std::get<Clock::TimePoint::duration>(step));
      }
    }
    EXPECT_EQ(*player_->lyricsOfCurrentTrack(), "lyrics of " + story.track);
    EXPECT_EQ(player_->currentTrack()->name, story.track);
    EXPECT_EQ(*player_->playerPosition(), story.position);
    EXPECT_EQ(*player_->playerState(), story.state);
  }
}

TEST_F(AnEmbeddedPlayer, LosesNoTimeToFrequentQuestions) {
  for (int question = 0; question < 1000; ++question) {
    clock_.advance(1'700ns);
    player_->playerPosition();
  }
  clock_.advance(10s);

  EXPECT_EQ(*player_->playerPosition(), 1'700us);
}

TEST_F(AnEmbeddedPlayer, WakesAtOnceFromALongSleep) {
  player_.emplace(clock_, kResources, std::vector{track("A", 1us), track("B", 2us)});
  // Going through these track by track would take days.
  clock_.advance(24h * 365 * 50 + 1us);
  EXPECT_EQ(player_->currentTrack()->name, "B");
}

TEST_F(AnEmbeddedPlayer, KeepsItsVolumeAndTheRatingOfEachTrackWithinTheScale) {
  EXPECT_EQ(*player_->soundVolume(), 80);
  player_->setRatingOfCurrentTrack(60);
  player_->perform(Next);
  EXPECT_EQ(player_->currentTrack()->rating, 20);
  for (const auto& [set, expected] : {std::pair{37, 37}, {-5, 0}, {101, 100}}) {
    player_->setSoundVolume(set);
    EXPECT_EQ(*player_->soundVolume(), expected);
    player_->setRatingOfCurrentTrack(set);
    EXPECT_EQ(player_->currentTrack()->rating, expected);
  }
  player_->perform(Previous);
  EXPECT_EQ(player_->currentTrack()->rating, 60);
}

TEST_F(AnEmbeddedPlayer, ServesSeveralThreadsAtOnce) {
  const auto use = [this] {
    for (int round = 0; round < 500; ++round) {
      clock_.advance(1s);
      player_->perform(Play);
      player_->setRatingOfCurrentTrack(round % 100);
      player_->setSoundVolume(round % 100);
      EXPECT_LT(*player_->soundVolume(), 100);
      EXPECT_EQ(*player_->playerState(), Playing);
      EXPECT_LT(*player_->playerPosition(), 30s);
      EXPECT_TRUE(player_->currentTrack());
      EXPECT_TRUE(player_->lyricsOfCurrentTrack()->starts_with("lyrics"));
      EXPECT_TRUE(player_->artworkOfCurrentTrack()->empty());
    }
  };

  std::vector<std::thread> threads(4);
  for (auto& thread : threads) thread = std::thread(use);
  for (auto& thread : threads) thread.join();

  // The threads took 2000 seconds together, which is 33 rounds of the list and 20 seconds.
  EXPECT_EQ(player_->currentTrack()->name, "B");
  EXPECT_EQ(*player_->playerPosition(), 10s);
}

TEST_F(AnEmbeddedPlayer, OfNoTracksIsStoppedAndHasNoneToTellOf) {
  player_.emplace(clock_, kResources, std::vector<EmbeddedTrack>());
  for (const auto request : {Play, Pause, Previous, Next}) EXPECT_TRUE(player_->perform(request));
  clock_.advance(1h);

  EXPECT_TRUE(player_->running());
  EXPECT_EQ(*player_->playerState(), Stopped);
  EXPECT_EQ(*player_->playerPosition(), 0s);
  EXPECT_EQ(player_->currentTrack().failure(), PlayerFailure::NoSuchObject);
  EXPECT_EQ(player_->lyricsOfCurrentTrack().failure(), PlayerFailure::NoSuchObject);
  EXPECT_EQ(player_->artworkOfCurrentTrack().failure(), PlayerFailure::NoSuchObject);
  EXPECT_EQ(player_->setRatingOfCurrentTrack(20).failure(), PlayerFailure::NoSuchObject);
  player_->setSoundVolume(5);
  EXPECT_EQ(*player_->soundVolume(), 5);
}

TEST_F(AnEmbeddedPlayer, ShowsTheCurrentTracksCoverIfItHasOne) {
  player_.emplace(
      clock_, kResources,
      std::vector{track("A", 1s, "lanterns"), track("B", 1s), track("C", 1s, "no such")});
  const auto cover = kResources.dataForResource("covers/lanterns.png").value();
  for (const auto& shown : {cover, {}, {}}) {
    EXPECT_EQ(*player_->artworkOfCurrentTrack(), shown);
    clock_.advance(1s);
  }
}

TEST(TracksThatEndByThemselves, AreNewsForOneWhoListens) {
  struct Listener final : PlayerNewsListener {
    void playerNews(PlayerNews told) override { ends += told == PlayerNews::Changed; }
    std::atomic<int> ends = 0;
  };
  const SteadyClock clock;
  Listener listener;
  EmbeddedPlayer player(clock, kResources, {track("A", 1ms), track("B", 1ms)}, &listener);
  player.currentTrack();
  EXPECT_TRUE(eventually([&] { return listener.ends > 2; }));
}

TEST(TheBuiltInTracks, KeepWhatATrackPromises) {
  std::set<std::string> names;
  for (const auto& [track, cover] : embeddedTracks()) {
    SCOPED_TRACE(track.name);
    EXPECT_TRUE(names.insert(track.name).second);
    EXPECT_FALSE(track.artist.empty() || track.album.empty());
    EXPECT_TRUE(track.rating >= 0 && track.rating <= 100);
    EXPECT_TRUE(track.finish && *track.finish > 0s);
    EXPECT_TRUE(cover.empty() || kResources.dataForResource("covers/" + cover + ".png"));
  }
}

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
       {std::pair(Playing, "playing"), {Paused, "paused"}, {Stopped, "stopped"}}) {
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
  struct Row {
    PlayerFailure failure;
    int number;
    const char* message;
  };
  for (const auto& [failure, number, message] :
       {Row{PlayerFailure::NotRunning, -600, "Application isn't running."},
        {PlayerFailure::NoSuchObject, kNoSuchObject, "Can't get that object."},
        {PlayerFailure::NotUnderstood, kNotUnderstood,
         "The player doesn't understand the command."},
        {PlayerFailure::TimedOut, -1712, "The player did not answer in time."}}) {
    player_.failure = failure;
    for (const std::string command : {"play", "get sound volume", "set sound volume to 5",
                                      "tell artwork 1 of the current track to raw data"}) {
      const auto error = errorOf("tell app \"iTunes\" to " + command);
      EXPECT_EQ(error.number, number) << command;
      EXPECT_EQ(error.briefMessage, message);
    }
  }
  player_.answersTooMuch = true;
  EXPECT_EQ(errorOf("tell app \"iTunes\" to get sound volume").number, kNotUnderstood);
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
