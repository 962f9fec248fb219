#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "players/mpris/track/TrackFileReader.h"
#include "tests/support/MediaFile.h"
#include "tests/support/RowName.h"

namespace Corvella {
namespace {

using namespace std::string_literals;

std::string bigEndian(std::size_t number, unsigned bits = 8) {
  std::string bytes;
  for (unsigned index = 4; index-- > 0;) {
    bytes += static_cast<char>(number >> index * bits & ((1U << bits) - 1));
  }
  return bytes;
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
    const auto size = bigEndian(content.size());
    return name + std::string(size.rbegin(), size.rend()) + content;
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

struct Row {
  std::string name;
  std::string content;
  std::string lyrics;
};

class AHostileTrack : public testing::TestWithParam<Row> {};

TEST_P(AHostileTrack, SaysNoMoreThanIsSafeToRead) {
  const TemporaryFolder folder;
  const auto url = urlOf(folder.write("track", GetParam().content));

  EXPECT_EQ(TrackFileReader().tags(url).lyrics, GetParam().lyrics);
}

// The size of the frame does not count the byte that spreads it.
const std::string kSpreadFrame = "PRIV" + bigEndian(2) + "\0\0\xFF\0\xE0"s;
const std::string kExtendedHeader = bigEndian(10) + std::string(6, '\0');
// What follows the size is "\0eng\0La", deflated.
const std::string kCompressedLyrics = frame(
    "USLT", bigEndian(7) + "\x78\x9C\x63\x48\xCD\x4B\x67\xF0\x49\4\0\7\x20\1\xE8"s, "\0\x80"s);
// TagLib takes the size of an extended header off the end of the frames, too.
const std::string kPadding(20, '\0');
const std::string kLongest(kLongestLyrics, 'x');

INSTANTIATE_TEST_SUITE_P(
    Tracks, AHostileTrack,
    testing::Values(
        Row{"DeepBoxes", nestedBoxes(200'000), ""},
        Row{"DeepChapters", sound(tag(nestedChapters(100'000) + lyrics())), "La"},
        Row{"DeepContents", sound(tag(nestedChapters(100'000, "CTOC") + lyrics())), "La"},
        Row{"SpreadBytes", sound(tag(kSpreadFrame + lyrics(), '\x80')), "La"},
        Row{"DeepChaptersInSpreadBytes",
            sound(tag(kSpreadFrame + nestedChapters(100'000) + lyrics(), '\x80')), ""},
        Row{"Compressed", sound(tag(kCompressedLyrics)), ""},
        Row{"CompressedBehindAnExtendedHeader",
            sound(tag(kExtendedHeader + kCompressedLyrics + kPadding, '\x40')), ""},
        Row{"PlainBehindAnExtendedHeader",
            sound(tag(kExtendedHeader + lyrics() + kPadding, '\x40')), "La"},
        Row{"CompressedInAChunk", wave(tag(kCompressedLyrics)), ""},
        Row{"CompressedInAChunkWithoutMark", wave("XXX" + tag(kCompressedLyrics).substr(3)), ""},
        Row{"PlainInAChunk", wave(tag(lyrics())), "La"},
        Row{"ManyFrames", sound(tag(repeated(9'999, frame("PRIV", "a")) + lyrics())), "La"},
        Row{"TooManyFrames", sound(tag(repeated(10'000, frame("PRIV", "a")) + lyrics())), ""},
        Row{"PaddingThatLooksLikeFrames", sound(tag(lyrics() + kPadding + kCompressedLyrics)),
            "La"},
        Row{"ALargeTag", sound(tag(lyrics() + std::string(15U << 20U, '\0'))), "La"},
        Row{"ATooLargeTag", sound(tag(lyrics() + std::string(16U << 20U, '\0'))), ""},
        Row{"LongLyrics", sound(tag(lyrics(kLongest))), kLongest},
        Row{"TooLongLyrics", sound(tag(lyrics(kLongest + "x"))), ""}),
    rowName);

}  // namespace
}  // namespace Corvella
