#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <future>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "players/mpris/Artwork.h"
#include "players/mpris/HttpFetcher.h"
#include "players/mpris/RegularFile.h"
#include "tests/support/HttpServer.h"
#include "tests/support/MediaFile.h"
#include "tests/support/RowName.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using Then = HttpServer::Then;

std::vector<std::byte> bytesOf(const std::string& text) {
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

struct KindRow {
  const char* name;
  std::string bytes;
  bool picture;
};

void PrintTo(const KindRow& row, std::ostream* out) {
  *out << row.name;
}

class AFilesStart : public testing::TestWithParam<KindRow> {};

TEST_P(AFilesStart, TellsWhetherItIsAPicture) {
  EXPECT_EQ(looksLikePicture(bytesOf(GetParam().bytes)), GetParam().picture);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, AFilesStart,
    testing::Values(
        KindRow{"Png", "\x89PNG\r\n\x1A\n", true}, KindRow{"Jpeg", "\xFF\xD8\xFF\xE0", true},
        KindRow{"Gif", "GIF89a", true}, KindRow{"WebP", "RIFF\1\2\3\4WEBPVP8 ", true},
        KindRow{"Bitmap", "BM\1\2\3\4\0\0\0\0\x36\0\0\0\x28\0\0\0"s, true},
        KindRow{"Tiff", "II*\0\1\2"s, true}, KindRow{"TiffBigEndian", "MM\0*\1\2"s, true},
        KindRow{"Avif", "\0\0\0 ftypavif"s, true}, KindRow{"Heic", "\0\0\0 ftypheic"s, true},
        KindRow{"Icon", "\0\0\1\0\2\0\x10\x10\0\0"s, true},
        KindRow{"WebPage", "<!DOCTYPE html><html>", false},
        KindRow{"VectorPicture", "<svg xmlns='http://www.w3.org/2000/svg'/>", false},
        KindRow{"Film", "\0\0\0 ftypisom"s, false}, KindRow{"Sound", "RIFF\1\2\3\4WAVE", false},
        KindRow{"Text", "BMW drives on the road", false},
        KindRow{"Cursor", "\0\0\2\0\2\0\x10\x10\0\0"s, false},
        KindRow{"CutShort", "\x89PNG", false}, KindRow{"Nothing", "", false}),
    rowName);

class ArtworkInAFile : public testing::Test {
 protected:
  TemporaryFolder folder_;

  std::string url(const std::string& name) const {
    return "file://" + (folder_.path() / name).string();
  }
};

TEST_F(ArtworkInAFile, IsReadWhole) {
  const std::string picture = pictureBytes(std::string(300'000, 'x'));
  folder_.write("cover", picture);

  EXPECT_EQ(readArtwork(url("cover")), bytesOf(picture));
}

TEST_F(ArtworkInAFile, IsFoundByAnEncodedOrARawAddress) {
  for (const char* name : {"100%", "#1?", "%231", "a b"}) folder_.write(name, pictureBytes(name));

  EXPECT_EQ(readArtwork(url("100%")), bytesOf(pictureBytes("100%")));
  EXPECT_EQ(readArtwork(url("100%25")), bytesOf(pictureBytes("100%")));
  EXPECT_EQ(readArtwork(url("#1?")), bytesOf(pictureBytes("#1?")));
  EXPECT_EQ(readArtwork(url("%231")), bytesOf(pictureBytes("%231")));
  EXPECT_EQ(readArtwork(url("a%20b")), bytesOf(pictureBytes("a b")));
}

TEST_F(ArtworkInAFile, IsAbsentWhenItIsNoRegularPictureFile) {
  folder_.write("page.png", "<html>");
  std::filesystem::create_directory(folder_.path() / "folder");
  ASSERT_EQ(::mkfifo((folder_.path() / "pipe").c_str(), 0600), 0);

  for (const char* name : {"page.png", "folder", "pipe", "missing"}) {
    EXPECT_EQ(readArtwork(url(name)), std::nullopt) << name;
  }
  EXPECT_EQ(readArtwork("file:///dev/zero"), std::nullopt);
  EXPECT_EQ(readArtwork("ftp://127.0.0.1/cover.png"), std::nullopt);
  EXPECT_EQ(readArtwork(""), std::nullopt);
}

TEST_F(ArtworkInAFile, IsAbsentWhenItIsTooLarge) {
  const auto file = folder_.write("cover", pictureBytes(""));
  std::filesystem::resize_file(file, largestPicture);
  EXPECT_TRUE(readArtwork(url("cover")));

  std::filesystem::resize_file(file, largestPicture + 1);

  EXPECT_FALSE(readArtwork(url("cover")));
}

TEST(ArtworkInItsAddress, IsDecodedAndMustBeAPicture) {
  EXPECT_EQ(readArtwork("data:text/plain;base64,iVBORw0KGgo"), bytesOf(pictureBytes("")));
  EXPECT_EQ(readArtwork("data:image/png,<html>"), std::nullopt);
  EXPECT_FALSE(readArtwork("data:," + pictureBytes(std::string(largestPicture, 'x'))));
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
}

TEST(APathWithANul, NamesNoFile) {
  EXPECT_FALSE(RegularFile::open("/proc/self/status\0x"s));
}

class ArtworkOnTheWeb : public testing::Test {
 protected:
  static constexpr auto kHead = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";

  ArtworkOnTheWeb() {
    for (const char* name : {"http_proxy", "all_proxy", "ALL_PROXY"}) setVariable(name, "");
  }

  static void setVariable(const char* name, const std::string& value) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the server's thread never looks at the environment.
    ::setenv(name, value.c_str(), 1);
  }

  void redirect(const std::string& path, const std::string& target) {
    server_.answer(path, {"HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 0\r\n"
                          "Location: " +
                          target + "\r\n\r\n"});
  }

  HttpServer server_;
  std::string picture_ = pictureBytes("web");
};

TEST_F(ArtworkOnTheWeb, IsFetchedThroughThreeRedirectsAtMost) {
  server_.answer("/0", {kHead + picture_});
  for (int left = 1; left <= 4; ++left) {
    redirect("/" + std::to_string(left), "/" + std::to_string(left - 1));
  }

  EXPECT_EQ(readArtwork(server_.url("/0")), bytesOf(picture_));
  EXPECT_EQ(readArtwork(server_.url("/3")), bytesOf(picture_));
  EXPECT_EQ(readArtwork(server_.url("/4")), std::nullopt);
}

TEST_F(ArtworkOnTheWeb, IsAbsentWhenTheServerSendsNoPicture) {
  server_.answer("/page", {kHead + "<html>"s});
  server_.answer("/error", {"HTTP/1.1 500 Oops\r\nConnection: close\r\n\r\n" + picture_});
  server_.answer("/cut", {"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + picture_});
  server_.answer("/nothing", {""});
  server_.answer("/garbage", {"\0\1\2\3 garbage"s});

  for (const char* path : {"/page", "/error", "/cut", "/nothing", "/garbage", "/missing"}) {
    EXPECT_EQ(readArtwork(server_.url(path)), std::nullopt) << path;
  }
}

TEST_F(ArtworkOnTheWeb, IsNeverReadFromAFile) {
  const TemporaryFolder folder;
  const auto secret = folder.write("secret", picture_);
  redirect("/", "file://" + secret.string());

  EXPECT_EQ(readArtwork(server_.url("/")), std::nullopt);
  EXPECT_EQ(HttpFetcher().fetch("file://" + secret.string()), std::nullopt);
}

TEST_F(ArtworkOnTheWeb, IsAbsentWhenItDoesNotEnd) {
  server_.answer("/", {kHead + picture_, Then::RepeatBody});

  EXPECT_EQ(readArtwork(server_.url("/")), std::nullopt);
}

TEST_F(ArtworkOnTheWeb, IsBoundedInBytesToTheByte) {
  const HttpLimits limits{.bytes = picture_.size()};
  server_.answer("/fits", {kHead + picture_});
  server_.answer("/large", {kHead + picture_ + "x"});

  EXPECT_TRUE(HttpFetcher(limits).fetch(server_.url("/fits")));
  EXPECT_FALSE(HttpFetcher(limits).fetch(server_.url("/large")));
}

TEST_F(ArtworkOnTheWeb, IsAbsentWhenTheServerFallsSilent) {
  server_.answer("/mute", {"", Then::KeepSilence});
  server_.answer("/midway", {kHead + picture_, Then::KeepSilence});
  const HttpFetcher fetcher({.time = 100ms});
  const auto start = std::chrono::steady_clock::now();

  EXPECT_EQ(fetcher.fetch(server_.url("/mute")), std::nullopt);
  EXPECT_EQ(fetcher.fetch(server_.url("/midway")), std::nullopt);

  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

TEST_F(ArtworkOnTheWeb, TakesNoCookieAlongAndNoPasswordToTheProxy) {
  server_.answer("/a", {"HTTP/1.1 302 Found\r\nSet-Cookie: id=1\r\nConnection: close\r\n"
                        "Content-Length: 0\r\nLocation: /b\r\n\r\n"});
  server_.answer("/b", {kHead + picture_});
  server_.answer("http://example.test/c", {kHead + picture_});

  EXPECT_TRUE(readArtwork(server_.url("/a")));
  auto proxy = server_.url("");
  setVariable("http_proxy", proxy.insert(proxy.find("//") + 2, "user:secret@"));
  EXPECT_TRUE(readArtwork("http://example.test/c"));
  setVariable("http_proxy", "");

  EXPECT_THAT(server_.requests(), SizeIs(3));
  EXPECT_THAT(server_.requests(), Each(Not(HasSubstr("Cookie:"))));
  EXPECT_THAT(server_.requests(), Each(Not(HasSubstr("Authorization:"))));
}

TEST_F(ArtworkOnTheWeb, IsFetchedBySeveralThreadsAtOnce) {
  server_.answer("/", {kHead + picture_});
  std::vector<std::future<std::optional<std::vector<std::byte>>>> fetches(4);

  for (auto& fetch : fetches) {
    fetch = std::async(std::launch::async, [this] { return readArtwork(server_.url("/")); });
  }

  for (auto& fetch : fetches) EXPECT_EQ(fetch.get(), bytesOf(picture_));
}

}  // namespace
}  // namespace Corvella
