#include <cstddef>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <zlib.h>

#include "players/mpris/TrackFileReader.h"
#include "tests/support/Bytes.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

using namespace std::string_literals;

class ADamagedTrack : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(Formats, ADamagedTrack, testing::ValuesIn(audioFormats),
                         [](const auto& row) { return row.param; });

TEST_P(ADamagedTrack, IsReadWithoutHarm) {
  const TemporaryFolder folder;
  TrackFileReader reader;
  const MediaTags tags{"La", "0.7", pictureBytes(std::string(70'000, 'c'))};
  std::ifstream stream(makeTrack(folder, tags, GetParam()), std::ios::binary);
  const std::string whole(std::istreambuf_iterator<char>(stream), {});
  std::mt19937 random(7);  // The same damage in each run.
  for (std::size_t round = 0; round < 60; ++round) {
    std::string damaged = whole.substr(0, round < 20 ? whole.size() * round / 20 : whole.size());
    for (std::size_t hits = 0; hits < round && round >= 20; ++hits) {
      damaged[random() % (round % 2 == 0 ? 300 : damaged.size())] = static_cast<char>(random());
    }
    const auto url = urlOf(folder.write("damaged", damaged));
    reader.tags(url);
    reader.picture(url);
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

}  // namespace
}  // namespace Corvella
