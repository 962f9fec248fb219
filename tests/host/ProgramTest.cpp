#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/RealMpv.h"
#include "tests/support/TaggedTrack.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

struct Outcome {
  std::optional<int> status;
  std::string output;
  std::string errors;
};

/// Runs the program to its end, on the bus at `address`.
Outcome run(std::vector<std::string> arguments, const std::string& address = "unix:path=/nowhere") {
  arguments.insert(arguments.begin(), CORVELLA_PROGRAM);
  Process program(arguments, {"DBUS_SESSION_BUS_ADDRESS=" + address});
  const auto status = program.wait();
  return {status, program.output(), program.errors()};
}

TEST(TheProgram, PrintsATrackOfARealPlayer) {
  const TemporaryFolder folder;
  const std::filesystem::path cover = CORVELLA_RESOURCES "/covers/harbour.png";
  const auto track = folder.path() / "track.flac";
  makeTrack(track, {.title = "Dawn",
                    .artist = "The Larks",
                    .album = "Morning",
                    .lyrics = "one\ntwo\nthree",
                    .cover = cover,
                    .seconds = 60});
  PrivateBus bus;
  const RealMpv mpv(bus.address(), {.files = {track}, .paused = true});

  const auto printed = run({"--print"}, bus.address());
  EXPECT_EQ(printed.status, 0);
  EXPECT_EQ(printed.output,
            "songTitle: Dawn\nsongArtistAndAlbum: The Larks - Morning\nalbumArtView: 288 x 288\n"
            "songRatingIndicator: 0 of 5\nplayButton: \u25b6\nsoundVolume: 100\n"
            "progressBar: 0 of 60\ntoggleLyricsButton: Show Lyrics\nlyricsView:  (0 lines)\n"
            "preferredContentSize: 320 x 285\n");
  const auto unfolded = run({"--print", "--lyrics"}, bus.address());
  EXPECT_THAT(unfolded.output, AllOf(HasSubstr("toggleLyricsButton: Hide Lyrics\n"),
                                     HasSubstr("lyricsView: one (3 lines)\n"),
                                     testing::EndsWith("\none\ntwo\nthree\n")));
  EXPECT_THAT(run({"--list-players"}, bus.address()).output, HasSubstr("mpv (paused)\n"));
  EXPECT_THAT(run({"--print", "--player", "mpv"}, bus.address()).output,
              HasSubstr("songTitle: Dawn\n"));
  const auto picture = folder.path() / "view.png";
  const auto missing = run({"--print", "--player", "other"}, bus.address());
  const auto drawn = run({"--snapshot", picture, "--player", "other"}, bus.address());
  EXPECT_THAT(missing.output,
              HasSubstr("songTitle: No Song Playing\nsongArtistAndAlbum: N/A - N/A\n"));
  EXPECT_TRUE(std::filesystem::exists(picture));
  for (const auto& outcome : {missing, drawn}) {
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors,
              "corvella: the player 'other' is not on the session bus; there are: mpv (paused)\n");
  }
}

TEST(TheProgram, PrintsJsonAgainAtEachChange) {
  PrivateBus bus;
  FakeMprisPlayer player(bus.address(), "fake");
  player.set("Identity", "A \"Fake\"");
  player.show("One", "Paused");
  Process program({CORVELLA_PROGRAM, "--print", "--json", "--follow", "--lyrics"},
                  {"DBUS_SESSION_BUS_ADDRESS=" + bus.address()});
  ASSERT_TRUE(eventually([&] { return player.received("Get Position") > 0; }));
  const auto looks = player.received("Get Position");
  player.show("Two", "Playing");
  player.announce("Metadata");
  player.announce("Metadata");
  ASSERT_TRUE(eventually([&] { return player.received("Get Position") > looks; }));
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
  const std::string song =
      R"({"album":"Somewhere","artist":"Someone, Else","length":215.5,"lyrics":"",)"
      R"("player":"A \"Fake\"","position":0,"rating":0,"state":"%","title":"#","volume":100})";
  const auto line = [&](const std::string& state, const std::string& title) {
    auto text = song;
    text.replace(text.find('%'), 1, state);
    return text.replace(text.find('#'), 1, title) + "\n";
  };
  EXPECT_EQ(program.output(), line("paused", "One") + line("playing", "Two"));
}

TEST(TheProgram, PrintsNothingButTheDisplayWhileThePlayerFails) {
  PrivateBus bus;
  FakeMprisPlayer player(bus.address(), "fake");
  player.behave({.hangs = true});
  const auto printed = run({"--print", "--player", "fake"}, bus.address());
  EXPECT_EQ(printed.status, 1);
  EXPECT_THAT(printed.output, AllOf(StartsWith("songTitle: No Song Playing\n"),
                                    testing::Not(HasSubstr("NSAppleScript"))));
  EXPECT_THAT(printed.errors, AllOf(HasSubstr("NSAppleScriptErrorNumber = -1712"),
                                    HasSubstr("'fake' does not answer; there are: fake")));
}

TEST(TheProgram, SaysThatItsOutputIsClosedInsteadOfBeingEnded) {
  const TemporaryFolder folder;
  const auto fifo = (folder.path() / "fifo").string();
  // The last reader of the pipe goes before the program comes.
  Process program({"sh", "-c", "mkfifo $0 && exec 3<>$0 4>$0 3<&- && exec $1 --version >&4", fifo,
                   CORVELLA_PROGRAM});
  EXPECT_EQ(program.wait(), 1);
  EXPECT_THAT(program.errors(), HasSubstr("cannot write to standard output"));
}

TEST(TheProgram, SaysSoWhenItShowsTheEmbeddedPlayerForWantOfABus) {
  const auto printed = run({"--print"});
  EXPECT_EQ(printed.status, 0);
  EXPECT_THAT(printed.output, AllOf(HasSubstr("albumArtView: 288 x 288\n"),
                                    HasSubstr("preferredContentSize: 320 x 285\n")));
  EXPECT_THAT(printed.errors, HasSubstr("embedded"));
  EXPECT_EQ(run({"--print", "--player", "Embedded"}).errors, "");
  EXPECT_EQ(run({"--print", "--player", "AUTO"}).errors, printed.errors);
}

TEST(TheProgram, EndsWithAStatusThatTellsWhatHappened) {
  EXPECT_THAT(run({"--version"}).output, testing::MatchesRegex("corvella [0-9.]+\n"));
  EXPECT_THAT(run({"--help"}).output, HasSubstr("--player"));
  const auto named = run({"--print", "--player", "mpv"});
  EXPECT_EQ(named.status, 1);
  EXPECT_THAT(named.errors, HasSubstr("session bus"));
  const auto wrong = run({"--shiny"});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(wrong.output, "");
  EXPECT_THAT(wrong.errors, AllOf(HasSubstr("shiny"), HasSubstr("Usage:")));
}

}  // namespace
}  // namespace Corvella
