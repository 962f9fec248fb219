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
  EXPECT_EQ(controller_.songInfo().volume, 0);
  EXPECT_THAT(runner_.scripts(), ElementsAre("tell app \"iTunes\" to " + std::string(kSongQuery),
                                             "tell app \"iTunes\" to get sound volume"));
  const SongInfo noSong{"No Song Playing", "Artist", "Album", "", 0, 40, {}};
  runner_.answer("get sound volume", number(40));
  EXPECT_EQ(controller_.songInfo(), noSong);
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

TEST_F(ASongController, HasNoValuesOfAPlayerThatDoesNotAnswer) {
  EXPECT_FALSE(controller_.running());
  EXPECT_EQ(controller_.playerPosition(), std::nullopt);
  EXPECT_EQ(controller_.playerState(), std::nullopt);
  EXPECT_EQ(controller_.songLyrics(), "");
}

TEST_F(ASongController, ShowsTheArtworkElseThePlaceholderElseAnEmptyImage) {
  decoder_.knowAnythingElseAs(512, 512);
  const NSBundle nowhere("/nonexistent");
  const SongController withoutPlaceholder(runner_, nowhere, decoder_);
  EXPECT_EQ(controller_.songArtwork()->width(), 512);  // The player gives none.
  runner_.answer(kArtworkQuery, Descriptor::descriptorWithData({std::byte(1)}));
  EXPECT_EQ(controller_.songArtwork()->width(), 512);
  EXPECT_EQ(controller_.songArtwork(), controller_.songArtwork()) << "it is decoded once";
  EXPECT_EQ(withoutPlaceholder.songArtwork()->width(), 0);
  runner_.answer(kArtworkQuery, Descriptor::descriptorWithData(FakeImageDecoder::picture(30, 20)));
  EXPECT_EQ(controller_.songArtwork()->height(), 20);
}

}  // namespace
}  // namespace Corvella
