#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "platform/base/FileDescriptor.h"
#include "players/mpris/artwork/Artwork.h"
#include "players/mpris/artwork/HttpFetcher.h"
#include "tests/support/MediaFile.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

/// A web server on this machine for tests: it answers one request after the other with bytes that
/// the test chose, so that they may be wrong in any way.
class HttpServer {
 public:
  struct Answer {
    std::string bytes;
    bool thenHangs = false;  ///< Says nothing more until the client hangs up.
  };

  explicit HttpServer(std::vector<Answer> answers) : answers_(std::move(answers)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const any = reinterpret_cast<sockaddr*>(&address_);
    socklen_t size = sizeof address_;
    const int listener = listener_.number();
    EXPECT_EQ(::bind(listener, any, size), 0);
    EXPECT_EQ(::listen(listener, 8), 0);
    EXPECT_EQ(::getsockname(listener, any, &size), 0);
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
    std::string buffer(1024, '\0');
    const auto count = ::recv(connection, buffer.data(), buffer.size(), 0);
    if (count > 0) request += buffer.substr(0, static_cast<std::size_t>(count));
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
  EXPECT_FALSE(readArtwork("http://user:secret@" + server.host()));
  EXPECT_EQ(textOf(readArtwork(server.url())), picture_);
  ::setenv("http_proxy", ("http://user:secret@" + server.host()).c_str(), 1);
  EXPECT_TRUE(readArtwork("http://example.test/c"));
  for (const auto& request : server.requests()) {
    EXPECT_THAT(request, testing::Not(testing::ContainsRegex("Cookie:|Authorization:")));
  }
}

}  // namespace
}  // namespace Corvella
