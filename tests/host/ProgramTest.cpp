#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

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
  const auto status = program.wait(std::chrono::seconds(30));
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
  EXPECT_THAT(run({"--print", "--player", "other"}, bus.address()).output,
              HasSubstr("songTitle: No Song Playing\nsongArtistAndAlbum: N/A - N/A\n"));
}

TEST(TheProgram, SaysSoWhenItShowsTheEmbeddedPlayerForWantOfABus) {
  const auto printed = run({"--print"});
  EXPECT_EQ(printed.status, 0);
  EXPECT_THAT(printed.output, AllOf(HasSubstr("albumArtView: 288 x 288\n"),
                                    HasSubstr("preferredContentSize: 320 x 285\n")));
  EXPECT_THAT(printed.errors, HasSubstr("embedded"));
  EXPECT_EQ(run({"--print", "--player", "embedded"}).errors, "");
}

TEST(TheProgram, EndsWithAStatusThatTellsWhatHappened) {
  EXPECT_THAT(run({"--version"}).output, StartsWith("corvella "));
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
