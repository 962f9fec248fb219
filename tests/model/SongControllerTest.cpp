#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "model/SongController.h"
#include "tests/support/FakeImageDecoder.h"
#include "tests/support/RecordingScriptRunner.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

using Descriptor = NSAppleEventDescriptor;

constexpr auto kSongQuery = "get (name, artist, album, lyrics, rating, finish) of current track";
constexpr auto kVolumeQuery = "get sound volume";
constexpr auto kArtworkQuery = "tell artwork 1 of the current track to raw data";

const auto text = &Descriptor::descriptorWithString;
const auto number = &Descriptor::descriptorWithInt32;
const auto list = &Descriptor::listDescriptor;
const auto nothing = &Descriptor::nullDescriptor;

class ASongController : public testing::Test {
 protected:
  RecordingScriptRunner runner_;
  NSBundle bundle_{CORVELLA_RESOURCES};
  FakeImageDecoder decoder_;
  SongController controller_{runner_, bundle_, decoder_};
};

TEST_F(ASongController, ReadsTheSongItemByItemAfterTwoScripts) {
  const SongInfo noSong{"No Song Playing", "Artist", "Album", "", 0, 40, {}};
  runner_.answer(kVolumeQuery, number(40));
  EXPECT_EQ(controller_.songInfo(), noSong);
  EXPECT_THAT(runner_.scripts(), ElementsAre("tell app \"iTunes\" to " + std::string(kSongQuery),
                                             "tell app \"iTunes\" to get sound volume"));

  const std::vector<std::pair<Descriptor, SongInfo>> rows{
      {list({text(" Títle "), text("One"), text("Two"), text("La\nla"), number(60), text("2.5")}),
       {" Títle ", "One", "Two", "La\nla", 60, 40, "2.5"}},
      {list({text(""), text(""), text(""), text(""), text("80"), number(7)}),
       {"", "", "", "", 80, 40, "7"}},
      {list({text("T")}), {"T", "Artist", "Album", "", 0, 40, {}}},
      {list({text("T"), nothing(), list({}), nothing(), text("many"), nothing()}),
       {"T", "Artist", "Album", "", 0, 40, {}}},
      {list({nothing(), text("A"), text("B"), text("L"), number(60), text("9")}), noSong},
      {text("T"), noSong}};
  for (const auto& [answer, song] : rows) {
    runner_.answer(kSongQuery, answer);
    EXPECT_EQ(controller_.songInfo(), song);
  }
}

TEST_F(ASongController, TakesAVolumeThatIsNoNumberForZero) {
  EXPECT_EQ(controller_.songInfo().volume, 0);
  runner_.answerText(kVolumeQuery, "loud");
  EXPECT_EQ(controller_.songInfo().volume, 0);
}

TEST_F(ASongController, PassesAnswersOnOrTellsThatThereAreNone) {
  EXPECT_FALSE(controller_.running());
  EXPECT_EQ(controller_.playerPosition(), std::nullopt);
  EXPECT_EQ(controller_.playerState(), std::nullopt);
  EXPECT_EQ(controller_.songLyrics(), "");

  runner_.answer("running", Descriptor::descriptorWithBoolean(true));
  runner_.answerText("player position", "63.5");
  runner_.answerText("get player state as string", "rewinding");
  runner_.answerText("get lyrics of current track", "Tra la");
  EXPECT_TRUE(controller_.running());
  EXPECT_EQ(controller_.playerPosition(), "63.5");
  EXPECT_EQ(controller_.playerState(), "rewinding");
  EXPECT_EQ(controller_.songLyrics(), "Tra la");
}

TEST_F(ASongController, SendsCommandsUnchangedAndOneScriptEach) {
  controller_.setSongRating(80);
  controller_.setSoundVolume(-55);
  controller_.playback(PlaybackRequest::Next);
  EXPECT_THAT(runner_.scripts(),
              ElementsAre("tell app \"iTunes\" to set rating of current track to 80",
                          "tell app \"iTunes\" to set sound volume to -55",
                          "tell app \"iTunes\" to next track"));
}

TEST_F(ASongController, ShowsTheArtworkThatThePlayerGives) {
  runner_.answer(kArtworkQuery, Descriptor::descriptorWithData(FakeImageDecoder::picture(30, 20)));
  const auto artwork = controller_.songArtwork();
  EXPECT_EQ(artwork->width(), 30);
  EXPECT_EQ(artwork->height(), 20);
  EXPECT_EQ(artwork->encodedSize(), 4U);
}

TEST_F(ASongController, ShowsThePlaceholderWhereThereIsNoArtworkOrItDoesNotDecode) {
  decoder_.knowAnythingElseAs(512, 512);
  EXPECT_EQ(controller_.songArtwork()->width(), 512);
  runner_.answer(kArtworkQuery, Descriptor::descriptorWithData(FakeImageDecoder::brokenPicture()));
  EXPECT_EQ(controller_.songArtwork()->width(), 512);
  EXPECT_EQ(controller_.songArtwork()->encodedSize(),
            std::filesystem::file_size(CORVELLA_RESOURCES "/empty_artwork.png"));
}

TEST_F(ASongController, ShowsAnEmptyImageWhereEvenThePlaceholderIsMissing) {
  const NSBundle missing("/nonexistent");
  const SongController controller(runner_, missing, decoder_);
  const auto artwork = controller.songArtwork();
  ASSERT_NE(artwork, nullptr);
  EXPECT_EQ(artwork->width(), 0);
}

}  // namespace
}  // namespace Corvella
