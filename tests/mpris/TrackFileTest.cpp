#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "platform/base/FileDescriptor.h"
#include "players/mpris/track/TrackFileReader.h"
#include "tests/support/MediaFile.h"

namespace Corvella {
namespace {

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
  expectTags(usual, kTagsWritten.lyrics, 70, kTagsWritten.cover);
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

  const bool isMp4 = GetParam() == "m4a";
  writeTags(path, {.lyrics = "[00:01.00]\n", .cover = "<html>", .otherLyrics = "La la"});
  // The lyrics of the other name, and the other picture, where the format has room for them.
  expectTags(path, isMp4 ? "" : "La la", {},
             isMp4 ? std::nullopt : std::optional(pictureBytes("artist")));
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
  TrackFileReader reader(std::chrono::seconds(0));
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

TEST_F(RememberedTags, AreForgottenForNewerOnesOfTheFileOrWhenManyFilesFollow) {
  auto touched = old_;
  touched.changed += 1;
  remember("/a", old_, "A");
  remember("/a", touched, "A2");
  EXPECT_EQ(found("/a", old_), "nothing");
  for (int file = 0; file < 20; ++file) {
    remember("/" + std::to_string(file), old_, "B");
    EXPECT_EQ(found("/a", touched), "A2") << "asked for all the time";
  }
  EXPECT_EQ(found("/19", old_), "B");
  EXPECT_EQ(found("/0", old_), "nothing");
}

TEST_F(RememberedTags, LeaveOutFilesInTheirWriting) {
  auto fresh = old_;
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

}  // namespace
}  // namespace Corvella
