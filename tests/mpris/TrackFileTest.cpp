#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <random>
#include <string>

#include <fileref.h>
#include <gtest/gtest.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <popularimeterframe.h>
#include <sys/stat.h>
#include <tpropertymap.h>
#include <zlib.h>

#include "players/mpris/TrackFile.h"
#include "players/mpris/TrackFileReader.h"
#include "tests/support/Bytes.h"
#include "tests/support/MediaFile.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string urlOf(const std::filesystem::path& path) {
  return "file://" + path.string();
}

const MediaTags tagsWritten{.lyrics = "Größe ♫\n\n[Chorus]\nLa la",
                            .rating = "0.7",
                            .cover = pictureBytes(std::string(70'000, 'c'))};

std::filesystem::path makeTrack(const TemporaryFolder& folder, const MediaTags& tags,
                                const std::string& format = "mp3") {
  auto path = folder.path() / ("track." + format);
  makeAudio(path, tags);
  return path;
}

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

TEST_P(ATrack, ThatIsDamagedIsReadWithoutHarm) {
  const std::string whole = contentOf(makeTrack(tagsWritten));
  std::mt19937 random(7);  // The same damage in each run.
  for (std::size_t round = 0; round < 60; ++round) {
    std::string damaged = whole.substr(0, round < 20 ? whole.size() * round / 20 : whole.size());
    for (std::size_t hits = 0; hits < round && round >= 20; ++hits) {
      damaged[random() % (round % 2 == 0 ? 300 : damaged.size())] = static_cast<char>(random());
    }
    const auto url = urlOf(folder_.write("damaged", damaged));
    reader_.tags(url);
    reader_.picture(url);
  }
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

std::string bigEndian(std::size_t number, unsigned bits = 8) {
  std::string bytes;
  for (unsigned index = 4; index-- > 0;) {
    bytes += static_cast<char>(number >> index * bits & ((1U << bits) - 1));
  }
  return bytes;
}

/// Chapter frames of ID3v2.3, each of which holds the next.
std::string nestedChapters(int depth) {
  std::string frames;
  for (int level = 0; level < depth; ++level) {
    const auto rest = static_cast<std::size_t>(depth - level) * 28 - 10;
    frames += "CHAP" + bigEndian(rest) + "\0\0a\0"s + std::string(16, '\0');
  }
  return frames;
}

/// A chapter frame whose content is stored compressed and holds `frames`.
std::string compressedChapter(const std::string& frames) {
  const std::string content = "a\0"s + std::string(16, '\0') + frames;
  std::vector<Bytef> packed(::compressBound(content.size()));
  uLongf size = packed.size();
  ::compress(packed.data(), &size, reinterpret_cast<const Bytef*>(content.data()), content.size());
  return "CHAP" + bigEndian(4 + size) + "\0\x80"s + bigEndian(content.size()) +
         std::string(packed.begin(), packed.begin() + static_cast<std::ptrdiff_t>(size));
}

std::string taggedSound(const std::string& frames) {
  const std::string sound = "\xFF\xFB\x90\x00"s + std::string(413, '\0');
  return "ID3\3\0\0"s + bigEndian(frames.size(), 7) + frames + sound + sound;
}

/// An MP4 file in which each box holds the next.
std::string nestedBoxes(int depth) {
  std::string boxes = bigEndian(16) + "ftypM4A \0\0\0\0"s;
  for (int level = 0; level < depth; ++level) {
    boxes += bigEndian(static_cast<std::size_t>(depth - level) * 8) + "moov";
  }
  return boxes;
}

TEST(ATrackWithAHugePicture, ShowsNone) {
  const TemporaryFolder folder;
  const auto path = makeTrack(folder, {"La", "", pictureBytes(std::string(33U << 20U, 'c'))});

  EXPECT_EQ(textOf(TrackFileReader().picture(urlOf(path))), pictureBytes("artist"));
  EXPECT_EQ(TrackFileReader().tags(urlOf(path)).lyrics, "La");
}

TEST(ATrackThatNestsWithoutEnd, DoesNotExhaustTheStack) {
  const TemporaryFolder folder;
  TrackFileReader reader;

  for (const auto& content :
       {taggedSound(nestedChapters(100'000)),
        taggedSound(compressedChapter(nestedChapters(100'000))), nestedBoxes(200'000)}) {
    const auto url = urlOf(folder.write("nested", content));
    EXPECT_EQ(reader.tags(url).lyrics, "");
    EXPECT_EQ(reader.picture(url), std::nullopt);
  }
}

TEST(ATrackWithTheWordChapterInItsLyrics, StillShowsThem) {
  const TemporaryFolder folder;
  std::string lyrics;
  for (int line = 0; line < 3000; ++line) lyrics += "CHAPTER NINE\nCTOC and more words\n";

  const auto path = makeTrack(folder, {lyrics, "", ""});

  EXPECT_EQ(TrackFileReader().tags(urlOf(path)).lyrics, lyrics);
}

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

  folder_.write("a b.lrc", std::string((1U << 20U) + 1, 'x'));
  EXPECT_EQ(lyrics(), "player's");
}

TEST_F(Lyrics, OfNoFileAreThePlayers) {
  for (const char* url : {"", "file:///dev/zero", "file:///", "http://a/b.mp3"}) {
    EXPECT_EQ(reader_.lyrics(url, "player's"), "player's") << url;
  }
}

class RememberedTags : public testing::Test {
 protected:
  static std::shared_ptr<const TrackTags> tags(std::string lyrics) {
    return std::make_shared<const TrackTags>(TrackTags{std::move(lyrics), std::nullopt});
  }
  std::string found(const std::string& path, const FileIdentity& identity) {
    const auto known = recent_.find(path, identity);
    return known ? known->lyrics : "nothing";
  }

  RecentTags recent_;
  FileIdentity old_{1, 2, 3, 4, 5};
};

TEST_F(RememberedTags, AreForThatStateOfThatFileAlone) {
  recent_.remember("/a", old_, tags("A"));
  EXPECT_EQ(found("/a", old_), "A");

  EXPECT_EQ(found("/b", old_), "nothing");
  for (const auto& other :
       {FileIdentity{9, 2, 3, 4, 5}, FileIdentity{1, 9, 3, 4, 5}, FileIdentity{1, 2, 9, 4, 5},
        FileIdentity{1, 2, 3, 9, 5}, FileIdentity{1, 2, 3, 4, 9}}) {
    EXPECT_EQ(found("/a", other), "nothing");
  }
}

TEST_F(RememberedTags, AreForgottenForNewerOnesOfTheFileOrWhenManyFilesFollow) {
  auto touched = old_;
  touched.changed += 1;
  recent_.remember("/a", old_, tags("A"));
  recent_.remember("/a", touched, tags("A2"));
  EXPECT_EQ(found("/a", old_), "nothing");

  for (int file = 0; file < 20; ++file) {
    recent_.remember("/" + std::to_string(file), old_, tags("B"));
    EXPECT_EQ(found("/a", touched), "A2") << "asked for all the time";
  }

  EXPECT_EQ(found("/19", old_), "B");
  EXPECT_EQ(found("/0", old_), "nothing");
}

TEST_F(RememberedTags, LeaveOutFilesInTheirWritingAndVeryLongLyrics) {
  auto fresh = old_;
  fresh.changed =
      std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
  recent_.remember("/fresh", fresh, tags("A"));
  recent_.remember("/long", old_, tags(std::string((1U << 20U) + 1, 'x')));

  EXPECT_EQ(found("/fresh", fresh), "nothing");
  EXPECT_EQ(found("/long", old_), "nothing");
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
