#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/base/FileDescriptor.h"
#include "players/mpris/track/TimedReads.h"
#include "players/mpris/track/TrackFileReader.h"
#include "tests/support/Eventually.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

const MediaTags kTagsWritten{.lyrics = "Größe ♫\n\n[Chorus]\nLa la",
                             .rating = "0.7",
                             .cover = pictureBytes(std::string(70'000, 'c'))};

class ATrack : public testing::TestWithParam<std::string> {
 protected:
  void expectTags(const std::filesystem::path& path, const std::string& lyrics,
                  const std::optional<int>& rating, const std::optional<std::string>& cover) {
    SCOPED_TRACE(path);
    EXPECT_EQ(reader_.tags(urlOf(path)).lyrics, lyrics);
    EXPECT_EQ(reader_.tags(urlOf(path)).rating, rating);
    EXPECT_EQ(textOf(reader_.picture(urlOf(path))), cover);
  }

  TemporaryFolder folder_;
  TrackFileReader reader_;
};

INSTANTIATE_TEST_SUITE_P(Formats, ATrack, testing::Values("mp3", "flac", "ogg", "opus", "m4a"),
                         [](const auto& row) { return row.param; });

TEST_P(ATrack, SaysWhatWasWrittenIntoItWhateverItIsCalled) {
  const auto usual = makeTrack(folder_, kTagsWritten, GetParam());
  for (const auto* name : {"usual", "lie.wav"}) {
    std::filesystem::copy_file(usual, folder_.path() / name);
    expectTags(folder_.path() / name, kTagsWritten.lyrics, 70, kTagsWritten.cover);
  }
}

TEST_P(ATrack, ShowsItsNewTagsAtOnceButForThoseThatSayNothing) {
  const auto path = makeTrack(folder_, {}, GetParam());
  expectTags(path, "", {}, {});

  // The second ones are as long as the first, so that the size does not tell.
  for (const int rating : {2, 4}) {
    const auto note = std::to_string(rating);
    writeTags(path, {.lyrics = note, .rating = "0." + note, .cover = pictureBytes(note)});
    expectTags(path, note, 10 * rating, pictureBytes(note));
  }

  // The lyrics of the other name, and the other picture, where every version of TagLib writes them.
  const bool isMp4 = GetParam() == "m4a";
  const std::string otherLyrics = isMp4 ? "" : "La la";
  writeTags(path, {.lyrics = "[00:01.00]\n", .cover = "<html>", .otherLyrics = otherLyrics});
  expectTags(path, otherLyrics, {}, isMp4 ? std::nullopt : std::optional(pictureBytes("artist")));
}

struct RatingRow {
  std::string fraction;
  std::vector<int> popularities;
  std::optional<int> rating;
};

TEST(ARating, IsReadAsPercent) {
  const TemporaryFolder folder;
  const auto path = makeTrack(folder, {});
  const std::vector<RatingRow> rows{{"0.0", {}, 0},     {" 0.625001 ", {}, 63}, {"1", {}, 100},
                                    {"0.2", {255}, 20}, {"3", {}, {}},          {"-1", {}, {}},
                                    {"nan", {}, {}},    {"0,8", {128}, 60},     {"", {0}, 0},
                                    {"", {1}, 20},      {"", {63}, 20},         {"", {64}, 40},
                                    {"", {127}, 40},    {"", {191}, 60},        {"", {192}, 80},
                                    {"", {251}, 80},    {"", {252}, 100},       {"", {0, 196}, 80}};
  for (const auto& [fraction, popularities, rating] : rows) {
    writeTags(path, {.rating = fraction, .popularities = popularities});
    EXPECT_EQ(TrackFileReader().tags(urlOf(path)).rating, rating)
        << fraction << testing::PrintToString(popularities);
  }
}

TEST(AnUnchangedTrack, IsReadOnce) {
  const TemporaryFolder folder;
  const auto url = urlOf(makeTrack(folder, {.rating = "0.7"}));
  const auto lyrics = folder.write("track.lrc", "[00:01]beside");
  TrackFileReader reader(0s);
  // The kernel keeps note of each read of a file of the folder before the read returns.
  const FileDescriptor watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC), "inotify");
  ASSERT_GE(::inotify_add_watch(watch.number(), folder.path().c_str(), IN_ACCESS), 0);
  for (const bool reads : {true, false}) {
    EXPECT_EQ(reader.tags(url).rating, 70);
    EXPECT_EQ(reader.lyrics(url, ""), "beside");
    std::array<char, 4096> events{};
    EXPECT_EQ(::read(watch.number(), events.data(), events.size()) > 0, reads);
  }
}

class RememberedTags : public testing::Test {
 protected:
  void remember(const std::string& path, const FileIdentity& identity, const std::string& lyrics) {
    recent_.remember(path, identity,
                     std::make_shared<const TrackTags>(TrackTags{lyrics, std::nullopt}));
  }
  std::string found(const std::string& path, const FileIdentity& identity) {
    const auto known = recent_.find(path, identity);
    return known ? known->lyrics : "nothing";
  }

  RecentTags recent_;
  FileIdentity old_{1, 2, 3, 4, 5};
};

TEST_F(RememberedTags, AreForgottenForNewerOnesOrWhenManyFollowAndNotKeptOfAFreshFile) {
  auto touched = old_;
  touched.changed += 1;
  remember("/a", old_, "A");
  remember("/a", touched, "A2");
  EXPECT_EQ(found("/a", old_), "nothing");
  for (int file = 0; file < 20; ++file) {
    remember(std::to_string(file), old_, "B");
    EXPECT_EQ(found("/a", touched), "A2") << "asked for all the time";
  }
  EXPECT_EQ(found("19", old_), "B");
  EXPECT_EQ(found("0", old_), "nothing");

  auto fresh = old_;  // It may be in its writing.
  fresh.changed =
      std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
  remember("/fresh", fresh, "A");
  EXPECT_EQ(found("/fresh", fresh), "nothing");
}

TEST_F(RememberedTags, ServeSeveralThreadsAtOnce) {
  for (const auto* path : {"/a", "/b"}) remember(path, old_, path);
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&] {
      for (int round = 0; round < 50'000; ++round) {
        for (const auto* path : {"/a", "/b"}) EXPECT_EQ(found(path, old_), path);
        remember("/other", old_, "other");
      }
    });
  }
}

class Lyrics : public testing::Test {
 protected:
  std::string lyrics(const std::string& playersText = "player's") {
    return reader_.lyrics(urlOf(folder_.path() / "a%20b.mp3"), playersText);
  }
  void writeTrack(const std::string& text) {
    std::filesystem::rename(makeTrack(folder_, {.lyrics = text}), folder_.path() / "a b.mp3");
  }

  TemporaryFolder folder_;
  TrackFileReader reader_;
};

TEST_F(Lyrics, ComeFromTheTrackThenFromBesideItThenFromThePlayer) {
  EXPECT_EQ(lyrics("[00:01]player's"), "player's");
  folder_.write("a b.lrc", "\n");
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

TEST(LyricsOfNoFile, AreThePlayersAndNeedNoThreadToBeReadOn) {
  EXPECT_EQ(TrackFileReader(0s, 1h, nullptr).lyrics("http://a/b.mp3", "said"), "said");
}

/// Reads against a file system of which some addresses answer when the test lets them.
class TimedReadsOfSlowFiles : public testing::Test {
 protected:
  static TimedReads::Deadline in(std::chrono::milliseconds time) {
    return std::chrono::steady_clock::now() + time;
  }
  /// A read that ends when it is let go, and is given up before.
  std::string readStuck(const std::string& address) {
    return reads_->read(address, in(10ms), [gate = gate_] {
      gate.wait();
      return std::string("late");
    });
  }
  std::string readSound(const std::string& address) {
    return reads_->read(address, in(1h), [] { return std::string("sound"); });
  }
  void letGo() { open_.set_value(); }

  std::promise<void> open_;
  std::shared_future<void> gate_ = open_.get_future().share();
  std::shared_ptr<TimedReads> reads_ = std::make_shared<TimedReads>();
};

TEST_F(TimedReadsOfSlowFiles, GiveUpTheStuckFileAndNoOtherUntilManyAreStuck) {
  for (std::size_t file = 0; file < TimedReads::kMostGivenUp; ++file) {
    const auto stuck = std::to_string(file);
    EXPECT_EQ(readSound("/other"), "sound") << file;
    EXPECT_EQ(readStuck(stuck), "");
    EXPECT_EQ(readSound(stuck), "");
  }
  EXPECT_EQ(readSound("/other"), "");

  letGo();
  for (const auto* file : {"0", "/other"}) {
    EXPECT_TRUE(eventually([&] { return readSound(file) == "sound"; }));
  }
}

TEST_F(TimedReadsOfSlowFiles, EndWithoutWaitingForWhatIsStuck) {
  auto owned = std::make_shared<int>(7);
  const std::weak_ptr<int> used = owned;
  reads_->read("/stuck", in(10ms), [gate = gate_, owned = std::move(owned)] {
    gate.wait();
    return *owned;
  });

  reads_.reset();

  letGo();
  EXPECT_TRUE(eventually([&] { return used.expired(); }));
}

TEST_F(TimedReadsOfSlowFiles, TakeAFailureForAnEmptyFile) {
  const auto fail = []() -> std::string { throw std::runtime_error("no memory"); };
  EXPECT_EQ(reads_->read("/broken", in(1h), fail), "");
  EXPECT_EQ(readSound("/broken"), "sound");
}

TEST_F(TimedReadsOfSlowFiles, LeaveATrackWithWhatItsPlayerSays) {
  const TemporaryFolder folders[2];
  const auto stuck = urlOf(makeTrack(folders[0], {"La", "0.7", pictureBytes("a")}));
  const auto sound = urlOf(makeTrack(folders[1], {"Lu", "0.2", pictureBytes("b")}));
  TrackFileReader reader(0s, 1h, reads_);
  readStuck(stuck);

  EXPECT_EQ(reader.tags(stuck, "said").lyrics, "said");
  EXPECT_EQ(reader.tags(stuck).rating, std::nullopt);
  EXPECT_EQ(reader.picture(stuck), std::nullopt);
  EXPECT_EQ(reader.tags(sound).rating, 20);
  // A picture file that is stuck leaves the picture in the track.
  EXPECT_EQ(textOf(reader.picture(sound, stuck)), pictureBytes("b"));

  letGo();
  EXPECT_TRUE(eventually([&] { return reader.lyrics(stuck, "said") == "La"; }));
}

TEST_F(TimedReadsOfSlowFiles, WaitForTheSameFileUntilTheDeadlineOfTheirScript) {
  const TemporaryFolder folder;
  const auto track = urlOf(makeTrack(folder, {"", "", pictureBytes("a")}));
  // A read that has begun, takes until it is let go and has all the time that it needs.
  std::promise<void> begun;
  auto slow = std::async(std::launch::async, [&] {
    return reads_->read("/cover", in(1h), [&] {
      begun.set_value();
      gate_.wait();
      return std::string("slow");
    });
  });
  begun.get_future().wait();

  // The time is used up by the cover, although the track itself could be read.
  EXPECT_EQ(TrackFileReader(0s, 10ms, reads_).picture(track, "/cover"), std::nullopt);
  // A read that nobody has time for is not begun, so the track is not taken for stuck.
  EXPECT_EQ(textOf(TrackFileReader(0s, 1h, reads_).picture(track)), pictureBytes("a"));

  letGo();
  EXPECT_EQ(slow.get(), "slow");
}

std::string bigEndian(std::size_t number, unsigned bits = 8) {
  std::string bytes;
  for (unsigned index = 4; index-- > 0;) {
    bytes += static_cast<char>(number >> index * bits & ((1U << bits) - 1));
  }
  return bytes;
}

std::string littleEndian(std::size_t number) {
  const auto bytes = bigEndian(number);
  return {bytes.rbegin(), bytes.rend()};
}

/// A frame of ID3v2.3.
std::string frame(const std::string& name, const std::string& content,
                  const std::string& flags = "\0\0"s) {
  return name + bigEndian(content.size()) + flags + content;
}

std::string lyrics(const std::string& text = "La") {
  return frame("USLT", "\0eng\0"s + text);
}

/// Chapter frames, each of which holds the next.
std::string nestedChapters(int depth, const std::string& name = "CHAP") {
  // A table of contents has a name, two bytes and no entries before the frames in it.
  const std::string start = name == "CHAP" ? "a\0"s + std::string(16, '\0') : "a\0\0\0"s;
  std::string frames;
  for (int level = depth; level > 0; --level) {
    const auto size = static_cast<std::size_t>(level) * (10 + start.size()) - 10;
    frames += name + bigEndian(size) + "\0\0"s + start;
  }
  return frames;
}

/// An ID3v2.3 tag with these flags.
std::string tag(const std::string& frames, char flags = '\0') {
  return "ID3\3\0"s + flags + bigEndian(frames.size(), 7) + frames;
}

std::string sound(const std::string& tag) {
  const std::string silence = "\xFF\xFB\x90\x00"s + std::string(413, '\0');
  return tag + silence + silence;
}

/// A WAV file with a chunk that calls itself a tag.
std::string wave(const std::string& tag) {
  const auto chunk = [](const std::string& name, const std::string& content) {
    return name + littleEndian(content.size()) + content;
  };
  return chunk("RIFF", "WAVE" + chunk("fmt ", std::string(16, '\0')) + chunk("id3 ", tag));
}

/// An MP4 file in which each box holds the next.
std::string nestedBoxes(int depth) {
  std::string boxes = bigEndian(16) + "ftypM4A \0\0\0\0"s;
  for (int level = depth; level > 0; --level) {
    boxes += bigEndian(static_cast<std::size_t>(level) * 8) + "moov";
  }
  return boxes;
}

std::string repeated(int count, const std::string& text) {
  std::string all;
  for (int index = 0; index < count; ++index) all += text;
  return all;
}

/// An APE tag of lyrics and of further items.
std::string apeTag(const std::string& items, int count) {
  const auto all = littleEndian(2) + std::string(4, '\0') + "Lyrics\0La"s + items;
  return all + "APETAGEX" + littleEndian(2000) + littleEndian(all.size() + 32) +
         littleEndian(static_cast<std::size_t>(count) + 1) + std::string(12, '\0');
}

/// An item of an APE tag that is a list, with NUL between its parts.
std::string apeList(std::size_t separators) {
  return littleEndian(separators) + littleEndian(0) + "ab\0"s + std::string(separators, '\0');
}

/// Comments of FLAC and Ogg: lyrics and further ones.
std::string comments(int further) {
  const auto field = [](const std::string& text) { return littleEndian(text.size()) + text; };
  return field("") + littleEndian(static_cast<std::size_t>(further) + 1) + field("LYRICS=La") +
         repeated(further, field("a=b"));
}

std::string flacBlock(char type, const std::string& content) {
  return type + bigEndian(content.size()).substr(1) + content;
}

std::string flac(const std::string& comments) {
  return "fLaC" + flacBlock('\0', std::string(34, '\0')) + flacBlock('\x84', comments) + "\xFF\xF8";
}

/// An Ogg file of these packets, each of them on pages of its own that hold up to 510 bytes.
std::string ogg(const std::vector<std::string>& packets) {
  constexpr std::size_t kMost = 510;
  std::string pages;
  for (auto rest : packets) {
    for (bool first = true, more = true; more; first = false) {
      const auto part = rest.substr(0, kMost);
      more = part.size() == kMost;
      // Two whole segments go on in the next page, a shorter one ends the packet.
      const auto segments = std::string(part.size() / 255, '\xFF') +
                            (more ? ""s : std::string(1, static_cast<char>(part.size() % 255)));
      pages += "OggS\0"s + (first ? '\0' : '\1') + std::string(20, '\0') +
               static_cast<char>(segments.size()) + segments + part;
      rest.erase(0, part.size());
    }
  }
  return pages;
}

/// An MP4 file with lyrics, and with further values of the same entry.
std::string mp4(int further) {
  const auto box = [](const std::string& name, const std::string& content) {
    return bigEndian(content.size() + 8) + name + content;
  };
  const auto value = [&](const std::string& text) {
    return box("data", bigEndian(1) + bigEndian(0) + text);
  };
  const auto list = box("ilst", box("\xA9lyr", value("La") + repeated(further, value(""))));
  return box("ftyp", "M4A \0\0\0\0"s) + box("moov", box("udta", box("meta", bigEndian(0) + list)));
}

// The size of the frame does not count the byte that spreads it.
const std::string kSpreadFrame = "PRIV" + bigEndian(2) + "\0\0\xFF\0\xE0"s;
const std::string kExtendedHeader = bigEndian(10) + std::string(6, '\0');
// What follows the size is "\0eng\0La", deflated.
const std::string kCompressedLyrics = frame(
    "USLT", bigEndian(7) + "\x78\x9C\x63\x48\xCD\x4B\x67\xF0\x49\4\0\7\x20\1\xE8"s, "\0\x80"s);
// TagLib takes the size of an extended header off the end of the frames, too.
const std::string kPadding(20, '\0');
const std::string kApeItem = littleEndian(0) + littleEndian(0) + "ab\0"s;
const std::string kOggFlac =
    "\x7F"
    "FLAC\1\0\0\3fLaC"s +
    flacBlock('\0', std::string(34, '\0'));
const std::string kVorbis = "\1vorbis" + std::string(23, '\0');
const std::string kLongest(kLongestLyrics, 'x');

struct HostileRow {
  const char* name;
  std::string content;
  std::string lyrics;
};

TEST(AHostileTrack, SaysNoMoreThanIsSafeToRead) {
  const TemporaryFolder folder;
  const auto lastBlock = flacBlock('\x84', comments(1));
  std::vector<std::string> manyBlocks(12, flacBlock('\2', "test"));
  manyBlocks.insert(manyBlocks.begin(), kOggFlac);
  manyBlocks.push_back(lastBlock);
  const std::vector<HostileRow> rows{
      {"DeepBoxes", nestedBoxes(200'000), ""},
      {"DeepChapters", sound(tag(nestedChapters(100'000) + lyrics())), "La"},
      {"DeepContents", sound(tag(nestedChapters(100'000, "CTOC") + lyrics())), "La"},
      {"SpreadBytes", sound(tag(kSpreadFrame + lyrics(), '\x80')), "La"},
      {"SpreadChapters", sound(tag(kSpreadFrame + nestedChapters(100'000) + lyrics(), '\x80')), ""},
      {"Packed", sound(tag(kCompressedLyrics)), ""},
      {"PackedExtended", sound(tag(kExtendedHeader + kCompressedLyrics + kPadding, '\x40')), ""},
      {"PlainExtended", sound(tag(kExtendedHeader + lyrics() + kPadding, '\x40')), "La"},
      {"PackedInAChunkWithoutMark", wave("XXX" + tag(kCompressedLyrics).substr(3)), ""},
      {"PlainInAChunk", wave(tag(lyrics())), "La"},
      {"ManyFrames", sound(tag(repeated(9'999, frame("PRIV", "a")) + lyrics())), "La"},
      {"TooManyFrames", sound(tag(repeated(10'000, frame("PRIV", "a")) + lyrics())), ""},
      {"PaddingThatLooksLikeFrames", sound(tag(lyrics() + kPadding + kCompressedLyrics)), "La"},
      {"ALargeTag", sound(tag(lyrics() + std::string(11U << 20U, '\0'))), "La"},
      {"ATooLargeTag", sound(tag(lyrics() + std::string(12U << 20U, '\0'))), ""},
      {"LongTexts", sound(tag(frame("TPE1", std::string(100'000, '\0')) + lyrics())), "La"},
      {"TooLongTexts", sound(tag(frame("TPE1", std::string(140'000, '\0')) + lyrics())), ""},
      {"ApeItems", sound("") + apeTag(repeated(9'999, kApeItem), 9'999), "La"},
      {"TooManyApeItems", sound("") + apeTag(repeated(10'000, kApeItem), 10'000), ""},
      {"ApeParts", sound("") + apeTag(apeList(10'000), 1), "La"},
      {"TooManyApeParts", sound("") + apeTag(apeList(10'001), 1), ""},
      {"FlacComments", flac(comments(9'999)), "La"},
      {"TooManyFlacComments", flac(comments(10'000)), ""},
      {"OggComments", ogg({kVorbis, "\3vorbis" + comments(5'000), "", ""}), "La"},
      {"TooManyOggComments", ogg({kVorbis, "\3vorbis" + comments(12'000), "", ""}), ""},
      {"OggFlacPadding", ogg({kOggFlac, flacBlock('\1', std::string(65'536, '\0')), lastBlock}),
       "La"},
      {"OggFlacOfManyBlocks", ogg(manyBlocks), ""},
      {"Mp4Values", mp4(9'999), "La"},
      {"TooManyMp4Values", mp4(10'000), ""},
      {"LongLyrics", sound(tag(lyrics(kLongest))), kLongest},
      {"TooLongLyrics", sound(tag(lyrics(kLongest + "x"))), ""}};
  for (const auto& [name, content, lyrics] : rows) {
    EXPECT_EQ(TrackFileReader().tags(urlOf(folder.write("track", content))).lyrics, lyrics) << name;
  }
}

}  // namespace
}  // namespace Corvella
