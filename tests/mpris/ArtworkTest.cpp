#include <chrono>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/base/RegularFile.h"
#include "players/mpris/artwork/Artwork.h"
#include "players/mpris/artwork/HttpFetcher.h"
#include "players/mpris/track/TrackFileReader.h"
#include "tests/support/Bytes.h"
#include "tests/support/HttpServer.h"
#include "tests/support/MediaFile.h"
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

TEST(AFilesStart, TellsWhetherItIsAPicture) {
  const auto isPicture = [](const std::string& start) {
    return looksLikePicture(std::as_bytes(std::span(start)));
  };
  for (const auto& start :
       {"\x89PNG\r\n\x1A\n"s, "\xFF\xD8\xFF\xE0"s, "GIF89a"s, "II*\0\1\2"s, "MM\0*\1\2"s,
        "RIFF\1\2\3\4WEBPVP8 "s, "\0\0\0 ftypavif"s, "\0\0\0 ftypheic"s,
        "BM\1\2\3\4\0\0\0\0\x36\0\0\0\x28\0\0\0"s, "\0\0\1\0\2\0\x10\x10\0\0"s}) {
    EXPECT_TRUE(isPicture(start)) << start;
  }
  // Among them a film, a sound, a cursor and a picture that is cut short.
  for (const auto& start : {"<!DOCTYPE html><html>"s, "<svg xmlns='http://www.w3.org/2000/svg'/>"s,
                            "\0\0\0 ftypisom"s, "RIFF\1\2\3\4WAVE"s, "BMW drives on the road"s,
                            "\0\0\2\0\2\0\x10\x10\0\0"s, "\x89PNG"s, ""s}) {
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

TEST_F(ArtworkInAFile, IsFoundByAnEncodedOrARawAddress) {
  for (const char* name : {"100%", "#1?", "%231", "a b"}) folder_.write(name, pictureBytes(name));

  for (const auto& [address, name] : {std::pair("100%", "100%"),
                                      {"100%25", "100%"},
                                      {"#1?", "#1?"},
                                      {"%231", "%231"},
                                      {"a%20b", "a b"}}) {
    EXPECT_EQ(read(address), pictureBytes(name)) << address;
  }
}

TEST_F(ArtworkInAFile, IsReadWholeUnlessItIsTooLarge) {
  const auto picture = pictureBytes(std::string(300'000, 'x'));
  const auto file = folder_.write("cover", picture);
  EXPECT_EQ(read("cover"), picture);

  std::filesystem::resize_file(file, kLargestPicture);
  EXPECT_TRUE(read("cover"));
  std::filesystem::resize_file(file, kLargestPicture + 1);
  EXPECT_FALSE(read("cover"));
}

TEST_F(ArtworkInAFile, IsAbsentWhenItIsNoRegularPictureFile) {
  folder_.write("page.png", "<html>");
  std::filesystem::create_directory(folder_.path() / "folder");
  ASSERT_EQ(::mkfifo((folder_.path() / "pipe").c_str(), 0600), 0);

  for (const char* name : {"page.png", "folder", "pipe", "missing"}) {
    EXPECT_EQ(read(name), std::nullopt) << name;
  }
  for (const char* url : {"file:///dev/zero", "ftp://127.0.0.1/cover.png", "data:", ""}) {
    EXPECT_EQ(TrackFileReader().picture("", url), std::nullopt) << url;
  }
}

TEST(ArtworkInItsAddress, IsDecodedAndMustBeAPicture) {
  EXPECT_EQ(textOf(readArtwork("data:text/plain;base64,iVBORw0KGgo")), pictureBytes(""));
  EXPECT_EQ(readArtwork("data:image/png,<html>"), std::nullopt);
  EXPECT_FALSE(readArtwork("data:," + pictureBytes(std::string(kLargestPicture, 'x'))));
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

class ArtworkOnTheWeb : public testing::Test {
 protected:
  static constexpr auto kHead = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";

  ArtworkOnTheWeb() {
    for (const char* name : {"http_proxy", "all_proxy", "ALL_PROXY"}) ::setenv(name, "", 1);
  }

  std::optional<std::string> read(const std::string& path) const {
    return textOf(readArtwork(server_.url(path)));
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

  EXPECT_EQ(read("/0"), picture_);
  EXPECT_EQ(read("/3"), picture_);
  EXPECT_EQ(read("/4"), std::nullopt);
}

TEST_F(ArtworkOnTheWeb, IsAbsentWhenTheServerSendsNoPictureOrOneWithoutEnd) {
  server_.answer("/page", {kHead + "<html>"s});
  server_.answer("/error", {"HTTP/1.1 500 Oops\r\nConnection: close\r\n\r\n" + picture_});
  server_.answer("/cut", {"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + picture_});
  server_.answer("/nothing", {""});
  server_.answer("/garbage", {"\0\1\2\3 garbage"s});
  server_.answer("/endless", {kHead + picture_, Then::RepeatBody});

  for (const char* path :
       {"/page", "/error", "/cut", "/nothing", "/garbage", "/endless", "/missing"}) {
    EXPECT_EQ(read(path), std::nullopt) << path;
  }
  EXPECT_EQ(readArtwork("http://127.0.0.1:1/nobody.png"), std::nullopt);
}

TEST_F(ArtworkOnTheWeb, IsNeverReadFromAFile) {
  const TemporaryFolder folder;
  const auto secret = folder.write("secret", picture_);
  redirect("/", "file://" + secret.string());

  EXPECT_EQ(read("/"), std::nullopt);
  EXPECT_EQ(HttpFetcher().fetch("file://" + secret.string()), std::nullopt);
}

TEST_F(ArtworkOnTheWeb, IsBoundedInBytesAndTime) {
  server_.answer("/fits", {kHead + picture_});
  server_.answer("/large", {kHead + picture_ + "x"});
  server_.answer("/mute", {"", Then::KeepSilence});
  server_.answer("/midway", {kHead + picture_, Then::KeepSilence});
  const HttpFetcher small({.bytes = picture_.size()});
  const HttpFetcher hasty({.time = 100ms});

  EXPECT_TRUE(small.fetch(server_.url("/fits")));
  EXPECT_FALSE(small.fetch(server_.url("/large")));
  EXPECT_FALSE(hasty.fetch(server_.url("/mute")));
  EXPECT_FALSE(hasty.fetch(server_.url("/midway")));
}

TEST_F(ArtworkOnTheWeb, TakesNoCookieAlongAndNoPasswordToTheProxy) {
  server_.answer("/a", {"HTTP/1.1 302 Found\r\nSet-Cookie: id=1\r\nConnection: close\r\n"
                        "Content-Length: 0\r\nLocation: /b\r\n\r\n"});
  server_.answer("/b", {kHead + picture_});
  server_.answer("http://example.test/c", {kHead + picture_});

  EXPECT_EQ(read("/a"), picture_);
  auto proxy = server_.url("");
  ::setenv("http_proxy", proxy.insert(proxy.find("//") + 2, "user:secret@").c_str(), 1);
  EXPECT_TRUE(readArtwork("http://example.test/c"));

  EXPECT_THAT(server_.requests(), SizeIs(3));
  EXPECT_THAT(server_.requests(), Each(Not(HasSubstr("Cookie:"))));
  EXPECT_THAT(server_.requests(), Each(Not(HasSubstr("Authorization:"))));
}

}  // namespace
}  // namespace Corvella
