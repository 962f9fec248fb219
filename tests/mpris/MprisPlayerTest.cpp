#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "players/mpris/MprisPlayer.h"
#include "players/mpris/bus/BusCalls.h"
#include "players/mpris/bus/SdBus.h"
#include "players/mpris/bus/SessionBus.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/MediaFile.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RealMpv.h"
#include "tests/support/ScriptedStack.h"
#include "tests/support/TaggedTrack.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using enum PlaybackRequest;
using testing::ElementsAre;
using Value = FakeMprisPlayer::Value;
using Entries = FakeMprisPlayer::Entries;
using Write = FakeMprisPlayer::Write;

/// Deadlines that no player misses unless it hangs, however busy the machine is.
constexpr MprisDeadlines patience{.call = longestWait, .greeting = longestWait, .missingBus = 10ms};

/// A session bus with a fake player on it that plays a track, and the stack that reads it.
class AFakePlayerOnTheBus : public testing::Test {
 protected:
  AFakePlayerOnTheBus() {
    fake_.show("Title", "Playing");
    connect(patience);
  }

  /// Has the player, or only those of a name, read with such deadlines from now on.
  void connect(const MprisDeadlines& deadlines, const std::string& pinnedName = "") {
    stack_.reset();
    player_ = std::make_unique<MprisPlayer>(pinnedName, deadlines);
    stack_ = std::make_unique<ScriptedStack>(*player_);
  }

  static constexpr auto kNotUnderstood = -1708;
  static constexpr auto kNoSuchObject = -1728;
  static constexpr auto kArtwork = "tell artwork 1 of the current track to raw data";
  static constexpr auto kSetRating = "set rating of current track to 80";

  const SongController& controller() const { return stack_->controller; }
  int errorNumber(const std::string& command) { return stack_->errorNumber(command); }
  bool eventuallyShows(const std::string& title) const {
    // The question whether a player runs has the current player chosen anew.
    return eventually(
        [&] { return controller().running() && controller().songInfo().title == title; });
  }

  PrivateBus bus_;
  ScopedSessionBus session_{bus_.address()};
  FakeMprisPlayer fake_{bus_.address(), "fake"};
  std::unique_ptr<MprisPlayer> player_;
  std::unique_ptr<ScriptedStack> stack_;
};

/// The same, for what is said of other players or of all.
class ABus : public AFakePlayerOnTheBus {};

TEST_F(AFakePlayerOnTheBus, IsReadThroughTheWholeStackByTheQuestionsThatAreNeeded) {
  fake_.set("Volume", 0.33299);
  fake_.set("Position", INT64_C(12'345'011));
  controller().songInfo();  // Learns what the player lists.
  fake_.forgetCalls();
  EXPECT_EQ(controller().playerPosition(), "12.345011");
  EXPECT_EQ(controller().songInfo(),
            (SongInfo{"Title", "Someone, Else", "Somewhere", "", 0, 33, "215.5"}));
  EXPECT_EQ(controller().playerState(), "playing");
  EXPECT_EQ(controller().songLyrics(), "");
  EXPECT_TRUE(controller().running());
  EXPECT_THAT(fake_.calls(),
              ElementsAre("Get Position", "Get Metadata", "Get Volume", "GetAll", "Get Metadata"));

  // A track that must go by the name of its player costs one more question.
  fake_.set("Identity", "Radio");
  fake_.setMetadata({{"mpris:length", INT64_C(5'000'000)}});
  fake_.forgetCalls();
  controller().songLyrics();
  controller().playerState();
  EXPECT_THAT(fake_.calls(), ElementsAre("Get Metadata", "Get Identity", "GetAll"));
}

TEST_F(AFakePlayerOnTheBus, ObeysCommandsButIsNotToldToPlayWhileItPlays) {
  controller().songInfo();
  fake_.forgetCalls();
  for (const auto request : {Play, Pause, Play, Next, Previous}) controller().playback(request);
  EXPECT_THAT(fake_.calls(), ElementsAre("Get PlaybackStatus", "Pause", "Get PlaybackStatus",
                                         "Play", "Next", "Previous"));
}

TEST_F(AFakePlayerOnTheBus, ShowsTheVolumeThatItHasAndTakesNoneWhereItHasNone) {
  EXPECT_EQ(errorNumber("set sound volume to 55"), 0);
  fake_.set("Volume", 0.4);
  EXPECT_EQ(controller().songInfo().volume, 40);

  fake_.remove("Volume");
  EXPECT_EQ(controller().playerState(), "playing");  // Learns that there is no volume now.
  EXPECT_EQ(controller().songInfo().volume, 100);
  EXPECT_EQ(errorNumber("set sound volume to 5"), kNotUnderstood);
  EXPECT_THAT(fake_.writes(), ElementsAre(Write{"Volume", 0.55}));
  EXPECT_EQ(fake_.received("Set Volume"), 1);
}

TEST_F(AFakePlayerOnTheBus, TakesARatingOnlyWhereItListsOneAndHasATrack) {
  EXPECT_EQ(errorNumber(kSetRating), kNotUnderstood);
  EXPECT_EQ(fake_.received("Set Rating"), 0);

  fake_.set("Rating", 0.4);
  fake_.announce("Rating");
  ASSERT_TRUE(eventually([&] { return controller().songInfo().ratings == 40; }));
  EXPECT_EQ(errorNumber(kSetRating), 0);
  EXPECT_THAT(fake_.writes(), ElementsAre(Write{"Rating", 0.8}));
  EXPECT_EQ(controller().songInfo().ratings, 80);

  fake_.setMetadata({});
  EXPECT_EQ(errorNumber(kSetRating), kNoSuchObject);
  EXPECT_EQ(fake_.received("Set Rating"), 1);
}

TEST_F(AFakePlayerOnTheBus, GivesWayToOneThatPlaysUntilThatLeaves) {
  EXPECT_EQ(controller().songInfo().title, "Title");
  auto other = std::make_unique<FakeMprisPlayer>(bus_.address(), "other");
  other->show("Other", "Playing");
  other->announce("PlaybackStatus");
  fake_.set("PlaybackStatus", "Paused");
  fake_.announce("PlaybackStatus");
  EXPECT_TRUE(eventuallyShows("Other"));
  other.reset();
  EXPECT_TRUE(eventuallyShows("Title"));
}

TEST_F(AFakePlayerOnTheBus, WithOddMetadataIsReadAllTheSame) {
  struct Row {
    std::string name;
    Value metadata;
    std::string state;
    std::string title;
    std::string status = "Playing";
    std::string identity{};
  };
  const std::string none = "No Song Playing";
  const std::vector<Row> rows{
      {"no dictionary", "nothing", "stopped", none},
      {"another dictionary", Value::of("a{ss}", 0), "stopped", none},
      {"empty texts", Entries({{"xesam:title", ""}, {"xesam:url", ""}}), "stopped", none},
      {"a track id", Entries({{"mpris:trackid", Value::of("o", "/noplaylist")}}), "stopped", none},
      {"a length", Entries({{"mpris:length", INT64_C(5'000'000)}}), "playing", none},
      {"a length in a player with a name", Entries({{"mpris:length", INT64_C(5'000'000)}}),
       "paused", "Radio", "Paused", "Radio"},
      {"nothing, with a name, playing", Entries(), "playing", "Radio", "Playing", "Radio"},
      {"nothing, with a name, paused", Entries(), "stopped", none, "Paused", "Radio"},
      {"a url that names nothing", Entries({{"xesam:url", "http://"}}), "playing", "Radio",
       "Playing", "Radio"},
      {"a url and no title", Entries({{"xesam:title", ""}, {"xesam:url", "http://radio/a%20b"}}),
       "playing", "a b"},
      {"strange entries around the title",
       Entries({{"a", Value::of("(i)", 1)},
                {"b", Value::of("a{sv}", 1, "c", "as", 1, "d")},
                {"e", Value::of("ay", 1, 1)},
                {"f", Value::of("v", "v", "y", 2)},
                {"xesam:title", "Found"},
                {"z", Value::of("aao", 0)}}),
       "playing", "Found"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    fake_.set("Metadata", row.metadata);
    fake_.set("PlaybackStatus", row.status);
    fake_.set("Identity", row.identity);
    EXPECT_EQ(controller().playerState(), row.state);     // Among all properties.
    EXPECT_EQ(controller().songInfo().title, row.title);  // Alone.
    EXPECT_EQ(errorNumber(kArtwork), row.title == none ? kNoSuchObject : 0);
    EXPECT_EQ(errorNumber(kSetRating), row.title == none ? kNoSuchObject : kNotUnderstood);
  }
}

TEST_F(AFakePlayerOnTheBus, TellsItsLengthInAnyNumber) {
  for (const auto& [length, finish] : {std::pair(Value::of("y", 200), "0.0002"),
                                       {Value::of("n", 3000), "0.003"},
                                       {Value::of("q", 5000), "0.005"},
                                       {Value::of("i", 2'000'000), "2.0"},
                                       {Value::of("u", 4'000'000'000U), "4000.0"},
                                       {Value::of("t", UINT64_C(7'000'001)), "7.000001"},
                                       {Value::of("b", 1), "0"}}) {
    fake_.setMetadata({{"xesam:title", "T"}, {"mpris:length", length}});
    EXPECT_EQ(controller().songInfo().finish, finish);
  }
}

TEST_F(AFakePlayerOnTheBus, CannotFillTheMemoryWithItsTexts) {
  std::string accents = "-";  // One byte, so that the limit falls into a character.
  while (accents.size() < 6000) accents += "\u00e9";
  const std::string artist(3000, 'a');
  const std::string lyrics(std::size_t{1} << 20U, 'l');
  fake_.setMetadata({{"xesam:title", accents},
                     {"xesam:artist", Value::of("as", 3, artist.c_str(), artist.c_str(), "No")},
                     {"xesam:asText", lyrics + "more"}});
  const auto song = controller().songInfo();
  EXPECT_EQ(song.title, accents.substr(0, 4095));
  EXPECT_EQ(song.artist, artist + ", " + artist.substr(0, 4096 - 3001));
  EXPECT_EQ(song.lyrics, lyrics);
}

TEST_F(ABus, ShowsTheRatingOfThePlayerThenOfItsMetadataThenOfTheFile) {
  const TemporaryFolder folders[2];
  const auto rated = urlOf(makeTrack(folders[0], {.rating = "0.2"}, "flac"));
  const auto unrated = urlOf(makeTrack(folders[1], {}, "flac"));
  struct Row {
    std::string player;
    std::optional<double> rating;      ///< The player's property.
    std::optional<double> userRating;  ///< In the metadata.
    std::string url;
    int shown;
  };
  const std::vector<Row> rows{
      {"any", 0.6, 0.4, rated, 60},        {"any", 0.0, 0.4, rated, 0},
      {"any", {}, 0.4, rated, 40},         {"any", {}, 0.0, rated, 20},
      {"any", {}, {}, rated, 20},          {"any", {}, 0.5, rated, 50},
      {"QuodLibet", {}, 0.5, rated, 20},   {"QuodLibet", {}, 0.4, rated, 40},
      {"QuodLibet", {}, 0.5, unrated, 50}, {"any", {}, 0.0, unrated, 0},
      {"any", {}, {}, unrated, 0}};
  for (const auto& row : rows) {
    FakeMprisPlayer fake(bus_.address(), row.player);
    Entries entries{{"xesam:url", row.url}};
    if (row.userRating) entries.emplace("xesam:userRating", *row.userRating);
    fake.setMetadata(entries);
    if (row.rating) fake.set("Rating", *row.rating);
    connect(patience, row.player);
    EXPECT_EQ(controller().songInfo().ratings, row.shown) << &row - rows.data();
  }
}

TEST_F(AFakePlayerOnTheBus, ShowsTheArtworkAndTheLyricsThatItTellsAndUnknownForTheRest) {
  constexpr auto gif = "data:image/gif;base64,R0lGODlhAQABAAAAADs=";
  fake_.setMetadata({{"xesam:title", "T"}, {"xesam:asText", "tra la"}, {"mpris:artUrl", gif}});
  EXPECT_EQ(player_->artworkOfCurrentTrack()->size(), 14U);
  EXPECT_EQ(controller().songLyrics(), "tra la");
  EXPECT_EQ(controller().songInfo(),
            (SongInfo{"T", "Unknown Artist", "Unknown Album", "tra la", 0, 100, "0"}));

  fake_.setMetadata({{"xesam:title", "T"}, {"mpris:artUrl", "/missing.png"}});
  EXPECT_EQ(player_->artworkOfCurrentTrack()->size(), 0U);
}

TEST_F(ABus, HasRhythmboxKeepARatingByItsOwnInterface) {
  FakeMprisPlayer fake(bus_.address(), "rhythmbox");
  fake.setMetadata({{"xesam:title", "T"}, {"xesam:url", "file:///a%20b.ogg"}});
  connect(patience, "rhythmbox");
  EXPECT_EQ(errorNumber(kSetRating), 0);
  EXPECT_THAT(fake.writes(), ElementsAre(Write{"rating of file:///a%20b.ogg", 4.0}));
  EXPECT_TRUE(player_->description().keepsRating);
}

TEST_F(ABus, IsNeverMadeToStartAPlayer) {
  const TemporaryFolder folder;
  const auto mark = folder.path() / "started";
  bus_.addActivatableName("org.mpris.MediaPlayer2.sleeping", "/usr/bin/touch " + mark.string());
  connect(patience, "sleeping");
  EXPECT_FALSE(controller().running());
  EXPECT_EQ(controller().songInfo().title, "No Song Playing");
  controller().playback(Play);
  EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST_F(ABus, HasARealPlayerShownAndObeyAsAnotherProgramSees) {
  const TemporaryFolder folder;
  const auto first = folder.path() / "first #1 100%.flac";
  makeTrack(first, {.title = "Größe \u266b",
                    .artist = "The Larks",
                    .album = "Dawn",
                    .lyrics = "[00:01.00]one\n[00:02.00]two",
                    .cover = CORVELLA_RESOURCES "/covers/harbour.png",
                    .seconds = 60});
  RealMpv mpv(bus_.address(), {.files = {first, makeTrack(folder, {}, "flac")}, .paused = true});
  connect(patience, "mpv");
  const auto eventuallyTells = [&](const char* property, const char* text) {
    return eventually([&] { return mpv.tells(property, text); });
  };
  EXPECT_EQ(controller().songInfo(),
            (SongInfo{"Größe \u266b", "The Larks", "Dawn", "one\ntwo", 0, 100, "60.0"}));
  EXPECT_EQ(*player_->artworkOfCurrentTrack(),
            NSBundle(CORVELLA_RESOURCES).dataForResource("covers/harbour.png"));

  EXPECT_EQ(controller().playerState(), "paused");
  controller().playback(Play);
  EXPECT_TRUE(eventuallyTells("PlaybackStatus", "Playing"));
  EXPECT_TRUE(eventually([&] { return controller().playerPosition() > "0.0"; }));
  controller().playback(Next);
  EXPECT_TRUE(eventuallyShows("track.flac"));
  controller().playback(Previous);
  EXPECT_TRUE(eventuallyShows("Größe \u266b"));
  controller().setSoundVolume(35);
  EXPECT_TRUE(eventuallyTells("Volume", "double 0.35"));
  controller().playback(Pause);
  EXPECT_TRUE(eventuallyTells("PlaybackStatus", "Paused"));
  mpv.send(SIGKILL);
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
}

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

TEST_F(AFakePlayerOnTheBus, IsAskedToRaiseItsWindow) {
  EXPECT_EQ(controller().songInfo().title, "Title");
  player_->raise();
  EXPECT_TRUE(eventually([&] { return fake_.received("Raise") == 1; }));
}

TEST_F(AFakePlayerOnTheBus, ThatHasLostAProbeIsAskedAgainWhenItTellsSomething) {
  connect({.call = 100ms, .greeting = longestWait});
  ASSERT_TRUE(eventually([&] { return errorNumber("get sound volume") == 0; }));
  fake_.forgetCalls();
  fake_.behave({.loses = "GetAll"});
  EXPECT_EQ(errorNumber("get player state as string"), kTimedOut);
  EXPECT_TRUE(eventually([&] { return fake_.received("GetAll") == 2; }));  // The probe.
  fake_.behave({});
  EXPECT_TRUE(eventually([&] {
    fake_.announce("Volume");
    return !player_->description().silent;
  }));
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

TEST_F(AFakePlayerOnTheBus, IsShownWithItsIdentityHoweverLateItTellsThat) {
  fake_.set("Identity", "Radio");
  fake_.set("CanPlay", Value::of("b", 0));
  for (const auto& slow : {FakeMprisPlayer::Behaviour{.hangs = true}, {.hangsAt = "GetAll"}}) {
    fake_.forgetCalls();
    fake_.behave(slow);
    connect({.call = longestWait, .greeting = 100ms});
    const auto deadlineHasPassed = [&] {
      const auto candidates = player_->candidates();
      return (candidates.size() == 1 && candidates.front().silent) || fake_.received("GetAll") == 2;
    };
    ASSERT_TRUE(eventually(deadlineHasPassed));
    fake_.behave({});
    player_->running();  // Has the current player chosen, which is described.
    EXPECT_TRUE(eventually([&] { return player_->description().identity == "Radio"; }));
    EXPECT_FALSE(player_->description().canPlay);
  }
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

TEST_F(AFakePlayerOnTheBus, IsGoneWithTheBusAndAnotherIsFoundWhenThereIsABusAgain) {
  EXPECT_EQ(controller().songInfo().title, "Title");
  bus_.stop();
  EXPECT_EQ(controller().songInfo().title, "No Song Playing");
  EXPECT_TRUE(eventually([&] { return !controller().running(); }));
  EXPECT_EQ(player_->description().identity, "The session bus");
  // The dying bus may have taken one more connection.
  EXPECT_TRUE(eventually([&] { return !player_->description().silent; }));
  EXPECT_THROW(requireSessionBus(), std::runtime_error);

  bus_.start();
  FakeMprisPlayer other(bus_.address(), "other");
  other.show("Another", "Playing");
  EXPECT_TRUE(eventuallyShows("Another"));
}

TEST(BusCalls, MayFindTheBusGoneWhileTheyHandleAMissedDeadline) {
  PrivateBus bus;
  const ScopedSessionBus session(bus.address());
  const auto connection = connectToSessionBus(longestWait);
  BusCalls calls(connection.get());
  bool isTooLate = false;
  const auto ask = [&](const BusCalls::ReplyHandler& handler) {
    calls.getAll("org.freedesktop.DBus", "org.freedesktop.DBus", 1, handler);
  };
  bus.freeze();  // So that the answer does not come first.
  ask([&](sd_bus_message* reply) {
    isTooLate = isError(reply);
    ask([](sd_bus_message* /*reply*/) {});
  });
  bus.stop();
  EXPECT_GT(sd_bus_process(connection.get(), nullptr), 0);
  EXPECT_TRUE(isTooLate);
}

TEST_F(AFakePlayerOnTheBus, IsLateWhileTheBusItselfHangs) {
  connect({.call = 100ms, .greeting = longestWait});
  ASSERT_TRUE(eventually([&] { return errorNumber("get sound volume") == 0; }));
  bus_.freeze();
  // More than there are connections, so that some must be made.
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] { EXPECT_EQ(errorNumber("get sound volume"), kTimedOut); });
  }
  for (auto& thread : threads) thread.join();

  // The same from the start, until the bus answers.
  EXPECT_FALSE(sessionBusAnswers(1ms));
  connect({.call = 100ms, .greeting = longestWait});
  EXPECT_FALSE(controller().running());
  EXPECT_TRUE(player_->description().silent);
  EXPECT_EQ(player_->description().identity, "The session bus");
  bus_.thaw();
  EXPECT_TRUE(eventuallyShows("Title"));
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
