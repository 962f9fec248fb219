#include <array>
#include <cerrno>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include <fileref.h>
#include <gmock/gmock.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <popularimeterframe.h>
#include <sys/inotify.h>
#include <tpropertymap.h>
#include <unistd.h>

#include "platform/base/FileDescriptor.h"
#include "players/mpris/track/TrackFileReader.h"
#include "tests/support/Bytes.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;

const MediaTags kTagsWritten{.lyrics = "Größe ♫\n\n[Chorus]\nLa la",
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

INSTANTIATE_TEST_SUITE_P(Formats, ATrack, testing::ValuesIn(kAudioFormats),
                         [](const auto& row) { return row.param; });

TEST_P(ATrack, SaysWhatWasWrittenIntoItWhateverItIsCalled) {
  const auto usual = makeTrack(kTagsWritten);
  std::filesystem::copy_file(usual, folder_.path() / "bare");
  std::filesystem::copy_file(usual, folder_.path() / "lie.wav");

  for (const auto& path : {usual, folder_.path() / "bare", folder_.path() / "lie.wav"}) {
    const auto tags = reader_.tags(urlOf(path));
    EXPECT_EQ(tags.lyrics, kTagsWritten.lyrics) << path;
    EXPECT_EQ(tags.rating, 70) << path;
    EXPECT_EQ(textOf(reader_.picture(urlOf(path))), kTagsWritten.cover) << path;
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

/// Sees which files of a folder are read, whoever reads them. The kernel keeps note of each read
/// before it returns.
class ReadWatch {
 public:
  explicit ReadWatch(const std::filesystem::path& folder)
      : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC), "inotify") {
    const int watch = ::inotify_add_watch(events_.number(), folder.c_str(), IN_ACCESS);
    if (watch < 0) throw std::system_error(errno, std::generic_category(), folder);
  }

  /// The names of the files that were read since the last time of asking.
  std::set<std::string> filesRead() {
    std::set<std::string> names;
    alignas(inotify_event) std::array<char, 4096> block{};
    for (;;) {
      const auto size = ::read(events_.number(), block.data(), block.size());
      if (size <= 0) return names;
      for (const char* next = block.data(); next < block.data() + size;) {
        const auto* const event = reinterpret_cast<const inotify_event*>(next);
        names.insert(event->name);
        next += sizeof *event + event->len;
      }
    }
  }

 private:
  FileDescriptor events_;
};

TEST(AnUnchangedTrack, IsReadOnce) {
  const TemporaryFolder folder;
  const auto url = urlOf(makeTrack(folder, {"", "0.7", ""}));
  folder.write("track.lrc", "[00:01]beside");
  TrackFileReader reader(0s);
  ReadWatch watch(folder.path());
  const auto filesRead = [&] {
    EXPECT_EQ(reader.tags(url).rating, 70);
    EXPECT_EQ(reader.lyrics(url, ""), "beside");
    return watch.filesRead();
  };

  EXPECT_THAT(filesRead(), testing::ElementsAre("track.lrc", "track.mp3"));
  EXPECT_THAT(filesRead(), testing::IsEmpty());
}

}  // namespace
}  // namespace Corvella
