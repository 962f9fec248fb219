#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/base/RegularFile.h"
#include "players/mpris/artwork/Artwork.h"
#include "players/mpris/track/TrackFileReader.h"
#include "tests/support/MediaFile.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

TEST(AFilesStart, TellsWhetherItIsAPicture) {
  const auto isPicture = [](const std::string& start) {
    return looksLikePicture(std::as_bytes(std::span(start)));
  };
  for (const auto& start :
       {"\x89PNG\r\n\x1A\n"s, "\xFF\xD8\xFF\xE0"s, "GIF89a"s, "II*\0\1\2"s, "MM\0*\1\2"s,
        "RIFF\1\2\3\4WEBPVP8 "s, "\0\0\0 ftypavif"s, "\0\0\0 ftypheic"s, "\0\0\0 ftypmif1"s,
        "BM\1\2\3\4\0\0\0\0\x36\0\0\0\x28\0\0\0"s, "\0\0\1\0\2\0\x10\x10\0\0"s,
        "<svg xmlns='http://www.w3.org/2000/svg'/>"s,
        "\xef\xbb\xbf<?xml version='1.0'?>\n<!DOCTYPE svg>\n<svg/>"s}) {
    EXPECT_TRUE(isPicture(start)) << start;
  }
  // Among them a film, a sound, a cursor and a picture that is cut short.
  for (const auto& start :
       {"<!DOCTYPE html><html><svg/></html>"s, "svg"s, "\0\0\0 ftypisom"s, "RIFF\1\2\3\4WAVE"s,
        "BMW drives on the road"s, "\0\0\2\0\2\0\x10\x10\0\0"s, "\x89PNG"s, ""s}) {
    EXPECT_FALSE(isPicture(start)) << start;
  }
}

class ArtworkInAFile : public testing::Test {
 protected:
  std::optional<std::string> read(const std::string& name) const {
    return textOf(TrackFileReader().picture("", "file://" + (folder_.path() / name).string()));
  }

  TemporaryFolder folder_;
};

TEST_F(ArtworkInAFile, IsReadWholeByItsRawAddressTooUnlessItIsTooLarge) {
  const auto picture = pictureBytes(std::string(300'000, 'x'));
  const auto file = folder_.write("%231", picture);
  EXPECT_EQ(read("%231"), picture);
  std::filesystem::resize_file(file, kLargestPicture);
  EXPECT_TRUE(read("%231"));
  std::filesystem::resize_file(file, kLargestPicture + 1);
  EXPECT_FALSE(read("%231"));
}

TEST_F(ArtworkInAFile, IsAbsentWhenItIsNoRegularPictureFile) {
  folder_.write("page.png", "<html>");
  std::filesystem::create_directory(folder_.path() / "folder");
  ASSERT_EQ(::mkfifo((folder_.path() / "pipe").c_str(), 0600), 0);
  for (const char* name : {"page.png", "folder", "pipe", "missing"}) {
    EXPECT_EQ(read(name), std::nullopt) << name;
  }
}

TEST(AnArtworkAddress, OfNoFileMustHoldAPicture) {
  EXPECT_EQ(textOf(readArtwork("data:text/plain;base64,iVBORw0KGgo")), pictureBytes(""));
  const auto tooLarge = "data:," + pictureBytes(std::string(kLargestPicture, 'x'));
  for (const auto& url : {"data:image/png,<html>"s, tooLarge, "file:///dev/zero"s,
                          "ftp://127.0.0.1/cover.png"s, "data:"s, ""s}) {
    EXPECT_EQ(TrackFileReader().picture("", url), std::nullopt) << url.substr(0, 80);
  }
}

TEST(AFileThatChangesWhileItIsRead, IsAbsentInsteadOfCut) {
  const TemporaryFolder folder;
  for (const std::size_t newSize : {10U, 1000U, 5000U}) {
    const auto path = folder.write("file", std::string(1000, 'x'));
    // An old time, so that even the coarsest clock tells the change.
    std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() - 1h);
    const auto file = RegularFile::open(path);
    ASSERT_TRUE(file);

    folder.write("file", std::string(newSize, 'y'));

    EXPECT_EQ(file->readAll(10'000), std::nullopt) << newSize;
  }
  // The system makes up such files while they are read, and calls them empty.
  const auto made = RegularFile::open("/proc/self/status");
  ASSERT_TRUE(made);
  EXPECT_EQ(made->readAll(10'000), std::nullopt);
  EXPECT_FALSE(RegularFile::open("/proc/self/status\0x"s));
}

}  // namespace
}  // namespace Corvella
