#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <span>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "platform/base/FileDescriptor.h"
#include "platform/base/RegularFile.h"
#include "players/mpris/artwork/Artwork.h"
#include "players/mpris/artwork/HttpFetcher.h"
#include "players/mpris/track/TrackFileReader.h"
#include "tests/support/MediaFile.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

TEST(AFilesStart, TellsWhetherItIsAPicture) {
  const auto isPicture = [](const std::string& start) {
    return looksLikePicture(std::as_bytes(std::span(start)));
  };
  for (const auto& start :
       {"\x89PNG\r\n\x1A\n"s, "\xFF\xD8\xFF\xE0"s, "GIF89a"s, "II*\0\1\2"s, "MM\0*\1\2"s,
        "RIFF\1\2\3\4WEBPVP8 "s, "\0\0\0 ftypavif"s, "\0\0\0 ftypheic"s,
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

TEST_F(ArtworkInAFile, IsFoundByAnEncodedOrARawAddress) {
  for (const char* name : {"%231", "a b"}) folder_.write(name, pictureBytes(name));
  EXPECT_EQ(read("%231"), pictureBytes("%231"));
  EXPECT_EQ(read("a%20b"), pictureBytes("a b"));
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

/// A web server on this machine for tests: it answers one request after the other with bytes that
/// the test chose, so that they may be wrong in any way.
class HttpServer {
 public:
  struct Answer {
    std::string bytes;
    bool thenHangs = false;  ///< Says nothing more until the client hangs up.
  };

  /// Starts to serve. Throws std::system_error when there is no port to be had.
  explicit HttpServer(std::vector<Answer> answers) : answers_(std::move(answers)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const any = reinterpret_cast<sockaddr*>(&address_);
    socklen_t size = sizeof address_;
    const int listener = listener_.number();
    if (::bind(listener, any, size) != 0 || ::listen(listener, 8) != 0 ||
        ::getsockname(listener, any, &size) != 0) {
      throw std::system_error(errno, std::generic_category(), "loopback server");
    }
    thread_ = std::thread([this] { serve(); });
  }
  ~HttpServer() {
    ::shutdown(listener_.number(), SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
  }

  /// "127.0.0.1:PORT"
  std::string host() const { return "127.0.0.1:" + std::to_string(ntohs(address_.sin_port)); }
  std::string url() const { return "http://" + host() + "/"; }

  /// The heads of all requests, when as many have come as there are answers. Called once.
  std::vector<std::string> requests() {
    thread_.join();
    return requests_;
  }

 private:
  void serve() {
    for (const auto& answer : answers_) {
      const int connection = ::accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC);
      if (connection < 0) return;
      const FileDescriptor owned(connection, "accept");
      auto& request = requests_.emplace_back();
      bool listening = true;
      while (listening && request.find("\r\n\r\n") == std::string::npos) {
        listening = receive(connection, request);
      }
      ::send(connection, answer.bytes.data(), answer.bytes.size(), MSG_NOSIGNAL);
      while (listening && answer.thenHangs) listening = receive(connection, request);
    }
  }

  /// Adds what the client says next; false when it has hung up.
  static bool receive(int connection, std::string& request) {
    std::array<char, 1024> buffer{};
    const auto count = ::recv(connection, buffer.data(), buffer.size(), 0);
    if (count > 0) request.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
  }

  FileDescriptor listener_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"};
  sockaddr_in address_{};
  const std::vector<Answer> answers_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

class ArtworkOnTheWeb : public testing::Test {
 protected:
  ArtworkOnTheWeb() {
    for (const char* name : {"http_proxy", "all_proxy", "ALL_PROXY"}) ::setenv(name, "", 1);
  }

  static HttpServer::Answer redirect(const std::string& target) {
    return {
        "HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 0\r\n"
        "Set-Cookie: id=1\r\nLocation: " +
        target + "\r\n\r\n"};
  }

  const std::string picture_ = pictureBytes("web");
  const std::string head_ = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";
  const HttpServer::Answer sound_{head_ + picture_};
};

TEST_F(ArtworkOnTheWeb, IsFetchedThroughThreeRedirectsAtMost) {
  const auto more = redirect("/more");
  EXPECT_EQ(textOf(readArtwork(HttpServer({sound_}).url())), picture_);
  EXPECT_EQ(textOf(readArtwork(HttpServer({more, more, more, sound_}).url())), picture_);
  // The next look at the track does not fetch it again.
  const HttpServer once({sound_});
  TrackFileReader reader;
  for (int i = 0; i < 2; ++i) EXPECT_EQ(textOf(reader.picture("", once.url())), picture_);
  EXPECT_EQ(readArtwork(HttpServer({more, more, more, more, sound_}).url()), std::nullopt);
}

TEST_F(ArtworkOnTheWeb, IsAbsentWhenTheServerSendsNoPictureOrTooLargeAOne) {
  for (const auto& answer :
       {head_ + "<html>", "HTTP/1.1 404 Not Found\r\n\r\n" + picture_,
        "HTTP/1.1 500 Oops\r\nConnection: close\r\n\r\n" + picture_,
        "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + picture_, ""s, "\0\1\2\3 garbage"s,
        head_ + pictureBytes(std::string(kLargestPicture, 'x'))}) {
    EXPECT_EQ(readArtwork(HttpServer({{answer}}).url()), std::nullopt) << answer.substr(0, 80);
  }
  EXPECT_EQ(readArtwork("http://127.0.0.1:1/nobody.png"), std::nullopt);
}

TEST_F(ArtworkOnTheWeb, IsNeverReadFromAFile) {
  const TemporaryFolder folder;
  const auto secret = "file://" + folder.write("secret", picture_).string();
  EXPECT_EQ(readArtwork(HttpServer({redirect(secret)}).url()), std::nullopt);
  EXPECT_EQ(HttpFetcher().fetch(secret), std::nullopt);
}

TEST_F(ArtworkOnTheWeb, IsBoundedInBytesAndTime) {
  const auto size = picture_.size();
  EXPECT_TRUE(HttpFetcher({.bytes = size}).fetch(HttpServer({sound_}).url()));
  EXPECT_FALSE(HttpFetcher({.bytes = size - 1}).fetch(HttpServer({sound_}).url()));
  for (const auto& begun : {""s, sound_.bytes}) {
    const HttpServer slow({{.bytes = begun, .thenHangs = true}});
    EXPECT_FALSE(HttpFetcher({.time = 100ms}).fetch(slow.url())) << begun;
  }
}

TEST_F(ArtworkOnTheWeb, TakesNoCookieAlongAndNoPasswordToTheProxy) {
  HttpServer server({redirect("/b"), sound_, sound_});
  EXPECT_EQ(textOf(readArtwork(server.url())), picture_);
  ::setenv("http_proxy", ("http://user:secret@" + server.host()).c_str(), 1);
  EXPECT_TRUE(readArtwork("http://example.test/c"));
  EXPECT_THAT(server.requests(),
              AllOf(Each(Not(HasSubstr("Cookie:"))), Each(Not(HasSubstr("Authorization:")))));
}

}  // namespace
}  // namespace Corvella
