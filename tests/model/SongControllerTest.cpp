#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "model/SongController.h"
#include "tests/support/FakeImageDecoder.h"
#include "tests/support/RecordingScriptRunner.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

using testing::ElementsAre;

using Descriptor = NSAppleEventDescriptor;

constexpr auto kSongQuery = "get (name, artist, album, lyrics, rating, finish) of current track";
constexpr auto kVolumeQuery = "get sound volume";
constexpr auto kArtworkQuery = "tell artwork 1 of the current track to raw data";

Descriptor text(const char* value) {
  return Descriptor::descriptorWithString(value);
}

class ASongController : public testing::Test {
 protected:
  RecordingScriptRunner runner_;
  NSBundle bundle_{CORVELLA_RESOURCES};
  FakeImageDecoder decoder_;
  SongController controller_{runner_, bundle_, decoder_};
};

struct SongRow {
  std::string name;
  std::optional<Descriptor> song;
  SongInfo expected;
};

class TheSongInfo : public ASongController, public testing::WithParamInterface<SongRow> {};

TEST_P(TheSongInfo, IsReadItemByItemAfterTwoScripts) {
  if (GetParam().song) runner_.answer(kSongQuery, *GetParam().song);
  runner_.answer(kVolumeQuery, Descriptor::descriptorWithInt32(40));
  EXPECT_EQ(controller_.songInfo(), GetParam().expected);
  EXPECT_THAT(runner_.scripts(), ElementsAre("tell app \"iTunes\" to " + std::string(kSongQuery),
                                             "tell app \"iTunes\" to get sound volume"));
}

const SongInfo kNoSong{"No Song Playing", "Artist", "Album", "", 0, 40, std::nullopt};

INSTANTIATE_TEST_SUITE_P(
    ForEachAnswer, TheSongInfo,
    testing::Values(
        SongRow{"Whole",
                Descriptor::listDescriptor({text(" Títle "), text("Someone"), text("Somewhere"),
                                            text("La\nla"), Descriptor::descriptorWithInt32(60),
                                            text("215.5")}),
                {" Títle ", "Someone", "Somewhere", "La\nla", 60, 40, "215.5"}},
        SongRow{"EmptyTextsAreTexts",
                Descriptor::listDescriptor({text(""), text(""), text(""), text(""), text("80"),
                                            Descriptor::descriptorWithInt32(7)}),
                {"", "", "", "", 80, 40, "7"}},
        SongRow{"WithoutFinish",
                Descriptor::listDescriptor({text("T"), text("A"), text("B"), text("L"),
                                            Descriptor::descriptorWithInt32(1)}),
                {"T", "A", "B", "L", 1, 40, std::nullopt}},
        SongRow{"WithATitleAlone",
                Descriptor::listDescriptor({text("T")}),
                {"T", "Artist", "Album", "", 0, 40, std::nullopt}},
        SongRow{"WithUnreadableItems",
                Descriptor::listDescriptor(
                    {text("T"), Descriptor::nullDescriptor(), Descriptor::listDescriptor({}),
                     Descriptor::nullDescriptor(), text("many"), Descriptor::nullDescriptor()}),
                {"T", "Artist", "Album", "", 0, 40, std::nullopt}},
        SongRow{
            "WithoutATitle",
            Descriptor::listDescriptor({Descriptor::nullDescriptor(), text("A"), text("B"),
                                        text("L"), Descriptor::descriptorWithInt32(60), text("9")}),
            kNoSong},
        SongRow{"NoList", text("T"), kNoSong}, SongRow{"NoAnswer", std::nullopt, kNoSong}),
    rowName);

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
  EXPECT_EQ(artwork->encodedSize(), FakeImageDecoder::picture(30, 20).size());
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
  const NSBundle nothing("/nonexistent");
  const SongController controller(runner_, nothing, decoder_);
  const auto artwork = controller.songArtwork();
  ASSERT_NE(artwork, nullptr);
  EXPECT_EQ(artwork->width(), 0);
}

}  // namespace
}  // namespace Corvella
