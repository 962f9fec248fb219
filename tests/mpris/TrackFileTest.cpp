#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include <fileref.h>
#include <gtest/gtest.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <popularimeterframe.h>
#include <tpropertymap.h>

#include "players/mpris/TrackFileReader.h"
#include "tests/support/Bytes.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;

const MediaTags tagsWritten{.lyrics = "Größe ♫\n\n[Chorus]\nLa la",
                            .rating = "0.7",
                            .cover = pictureBytes(std::string(70'000, 'c'))};

class ATrack : public testing::TestWithParam<std::string> {
 protected:
  std::filesystem::path makeTrack(const MediaTags& tags) {
    return Corvella::makeTrack(folder_, tags, GetParam());
  }

  TemporaryFolder folder_;
  TrackFileReader reader_;
};

INSTANTIATE_TEST_SUITE_P(Formats, ATrack, testing::ValuesIn(audioFormats),
                         [](const auto& row) { return row.param; });

TEST_P(ATrack, SaysWhatWasWrittenIntoItWhateverItIsCalled) {
  const auto usual = makeTrack(tagsWritten);
  std::filesystem::copy_file(usual, folder_.path() / "bare");
  std::filesystem::copy_file(usual, folder_.path() / "lie.wav");

  for (const auto& path : {usual, folder_.path() / "bare", folder_.path() / "lie.wav"}) {
    const auto tags = reader_.tags(urlOf(path));
    EXPECT_EQ(tags.lyrics, tagsWritten.lyrics) << path;
    EXPECT_EQ(tags.rating, 70) << path;
    EXPECT_EQ(textOf(reader_.picture(urlOf(path))), tagsWritten.cover) << path;
  }
}

TEST_P(ATrack, ShowsItsNewTagsAtOnce) {
  const auto path = makeTrack({});
  const auto url = urlOf(path);
  EXPECT_EQ(reader_.tags(url).lyrics, "");
  EXPECT_EQ(reader_.tags(url).rating, std::nullopt);
  EXPECT_EQ(reader_.picture(url), std::nullopt);

  // The second ones are as long as the first, so that the size does not tell.
  for (const int rating : {2, 4}) {
    const auto note = std::to_string(rating);
    writeTags(path, {.lyrics = note, .rating = "0." + note, .cover = pictureBytes(note)});

    EXPECT_EQ(reader_.tags(url).lyrics, note);
    EXPECT_EQ(reader_.tags(url).rating, 10 * rating);
    EXPECT_EQ(textOf(reader_.picture(url)), pictureBytes(note));
  }
}

TEST_P(ATrack, EmbedsOnlyPicturesThatAreSome) {
  const auto path = makeTrack({.lyrics = "", .rating = "", .cover = "<html>not a picture</html>"});

  const auto picture = textOf(reader_.picture(urlOf(path)));

  // The other picture of the track, where the format has room for one.
  EXPECT_EQ(picture, GetParam() == "m4a" ? std::nullopt : std::optional(pictureBytes("artist")));
}

TEST_P(ATrack, SaysItsLyricsUnderTheirOtherName) {
  const auto path = makeTrack({});
  TagLib::FileRef file(path.c_str(), false);
  TagLib::PropertyMap properties;
  properties.insert("LYRICS", TagLib::String("[00:01.00]\n"));
  properties.insert("UNSYNCEDLYRICS", TagLib::String("La la"));
  file.file()->setProperties(properties);
  file.save();

  // MP4 has one name for lyrics only.
  EXPECT_EQ(reader_.tags(urlOf(path)).lyrics, GetParam() == "m4a" ? "" : "La la");
}

struct RatingRow {
  std::string fraction;
  std::vector<int> popularities;
  std::optional<int> rating;
};

TEST(ARating, IsReadAsPercent) {
  const std::vector<RatingRow> rows{{"0.0", {}, 0},     {" 0.625001 ", {}, 63}, {"1", {}, 100},
                                    {"0.2", {255}, 20}, {"3", {}, {}},          {"-1", {}, {}},
                                    {"nan", {}, {}},    {"0,8", {128}, 60},     {"", {0}, 0},
                                    {"", {1}, 20},      {"", {63}, 20},         {"", {64}, 40},
                                    {"", {127}, 40},    {"", {191}, 60},        {"", {192}, 80},
                                    {"", {251}, 80},    {"", {252}, 100},       {"", {0, 196}, 80}};
  for (const auto& [fraction, popularities, rating] : rows) {
    SCOPED_TRACE(fraction + testing::PrintToString(popularities));
    const TemporaryFolder folder;
    const auto path = makeTrack(folder, {"", fraction, ""});
    TagLib::MPEG::File file(path.c_str(), false);
    for (const int popularity : popularities) {
      auto frame = std::make_unique<TagLib::ID3v2::PopularimeterFrame>();
      frame->setEmail(std::to_string(popularity));
      frame->setRating(popularity);
      file.ID3v2Tag(true)->addFrame(frame.release());
    }
    file.save();
    EXPECT_EQ(TrackFileReader().tags(urlOf(path)).rating, rating);
  }
}

/// How many bytes this thread has read from files so far.
long bytesRead() {
  std::ifstream statistics("/proc/thread-self/io");
  std::string name;
  long count = -1;
  statistics >> name >> count;
  return count;
}

TEST(AnUnchangedTrack, IsReadOnce) {
  if (bytesRead() < 0) GTEST_SKIP() << "this system does not count what a thread reads";
  const TemporaryFolder folder;
  const auto url = urlOf(makeTrack(folder, {"", "0.7", ""}));
  folder.write("track.lrc", "[00:01]beside");
  TrackFileReader reader(0s);
  const auto read = [&] {
    const long before = bytesRead();
    EXPECT_EQ(reader.tags(url).rating, 70);
    EXPECT_EQ(reader.lyrics(url, ""), "beside");
    return bytesRead() - before;
  };
  const long before = bytesRead();
  const long itself = bytesRead() - before;

  EXPECT_GT(read(), 200);
  EXPECT_EQ(read(), itself);
}

TEST(ATrackFileReader, ServesSeveralThreadsAtOnce) {
  const TemporaryFolder folder;
  const auto url = urlOf(makeTrack(folder, tagsWritten));
  TrackFileReader reader(0s);
  std::vector<std::future<void>> threads(4);

  for (auto& thread : threads) {
    thread = std::async(std::launch::async, [&] {
      for (int round = 0; round < 50; ++round) {
        EXPECT_EQ(reader.lyrics(url, ""), tagsWritten.lyrics);
        EXPECT_EQ(textOf(reader.picture(url)), tagsWritten.cover);
      }
    });
  }

  for (auto& thread : threads) thread.get();
}

}  // namespace
}  // namespace Corvella
