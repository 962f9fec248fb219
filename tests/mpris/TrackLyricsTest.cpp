#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "players/mpris/track/TrackFileReader.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

class Lyrics : public testing::Test {
 protected:
  std::string lyrics(const std::string& playersText = "player's") {
    return reader_.lyrics(urlOf(folder_.path() / "a%20b.mp3"), playersText);
  }
  void writeTrack(const std::string& text) {
    const auto path = makeTrack(folder_, {text, "", ""});
    std::filesystem::rename(path, folder_.path() / "a b.mp3");
  }

  TemporaryFolder folder_;
  TrackFileReader reader_;
};

TEST_F(Lyrics, ComeFromTheTrackThenFromBesideItThenFromThePlayer) {
  EXPECT_EQ(lyrics("[00:01]player's"), "player's");

  folder_.write("a b.txt", "text");
  EXPECT_EQ(lyrics(), "text");

  folder_.write("a b.lrc", "[00:01.00]timed\n");
  EXPECT_EQ(lyrics(), "timed\n");

  writeTrack("[00:01]track's");
  EXPECT_EQ(lyrics(), "track's");
}

TEST_F(Lyrics, PassOverSourcesThatSayNothingOrTooMuch) {
  writeTrack("");
  folder_.write("a b.lrc", "[ar:A]\r\n[00:01.00]\r\n");
  ASSERT_EQ(::mkfifo((folder_.path() / "a b.txt").c_str(), 0600), 0);

  EXPECT_EQ(lyrics(), "player's");
  EXPECT_EQ(lyrics(" \n"), "");

  const std::string longest(kLongestLyrics, 'x');
  EXPECT_EQ(lyrics(longest), longest);
  EXPECT_EQ(lyrics(longest + "x"), "");
  folder_.write("a b.lrc", longest + "x");
  EXPECT_EQ(lyrics(), "player's");
}

TEST_F(Lyrics, OfNoFileAreThePlayers) {
  for (const char* url : {"", "file:///dev/zero", "file:///", "http://a/b.mp3"}) {
    EXPECT_EQ(reader_.lyrics(url, "player's"), "player's") << url;
  }
}

}  // namespace
}  // namespace Corvella
