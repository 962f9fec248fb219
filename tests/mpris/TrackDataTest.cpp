#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "platform/base/FileDescriptor.h"
#include "platform/base/RegularFile.h"
#include "platform/base/Utf8.h"
#include "players/mpris/artwork/Artwork.h"
#include "players/mpris/artwork/DataUrl.h"
#include "players/mpris/artwork/HttpFetcher.h"
#include "players/mpris/track/FileUrl.h"
#include "players/mpris/track/TimedLyrics.h"
#include "players/mpris/track/TrackFileReader.h"
#include "players/mpris/track/TrackMetadata.h"
#include "tests/support/MediaFile.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using std::chrono::microseconds;

using Rows = std::vector<std::pair<std::string, std::string>>;

TEST(ADataAddress, HoldsTheseBytes) {
  for (const auto& [url, bytes] : Rows{{"data:image/png;base64,QUJD", "ABC"},
                                       {"data:image/png;base64,QUI=", "AB"},
                                       {"data:;base64,QQ==", "A"},
                                       {"data:image/png;base64,QUJDRA", "ABCD"},  // no padding
                                       {"data:;base64,+/+/", "\xFB\xFF\xBF"},
                                       {"data:image/png;name=a.png;base64,QUJD", "ABC"},
                                       {"DATA:image/PNG;BASE64,QUJD", "ABC"},
                                       {"data:image/png; base64, QU\r\n\tJ D ", "ABC"},
                                       {"data:;base64,QUI%3D%0A", "AB"},
                                       {"data:;base64,", ""},
                                       {"data:image/png,%89PNG%0d%0A", "\x89PNG\r\n"},
                                       {"data:,a%00b", std::string("a\0b", 3)},
                                       {"data:text/plain,a, b", "a, b"},
                                       {"data:base64,QUJD", "QUJD"}}) {  // no semicolon
    EXPECT_EQ(textOf(bytesOfDataUrl(url)), bytes) << url;
  }
}

TEST(ADataAddress, HoldsNothingWhereItIsMalformed) {
  for (const auto* url : {"data:;base64,QUJDR", "data:;base64,QU-D", "data:;base64,QUJ\xC3\xA9",
                          "data:;base64,QQ==QUJD", "data:;base64,====", "data:;base64,QUJD=",
                          "data:,%8", "data:,%zz", "data:image/png;base64", "date:,A"}) {
    EXPECT_EQ(bytesOfDataUrl(url), std::nullopt) << url;
  }
}

TEST(AFileAddress, MeansThesePathsInThisOrder) {
  const std::vector<std::pair<std::string, std::vector<std::filesystem::path>>> rows{
      {"file:///music/a.mp3", {"/music/a.mp3"}},
      {"FILE:/music/a.mp3", {"/music/a.mp3"}},
      {"file://LocalHost/music/a.mp3", {"/music/a.mp3"}},
      {"file:///a%231.mp3", {"/a#1.mp3", "/a%231.mp3"}},
      {"file:///a #1?.mp3", {"/a #1?.mp3"}},
      {"file:///100%.mp3%4g", {"/100%.mp3%4g"}},
      {"file:///1%2", {"/1%2"}},
      {"file:///%41%zz", {"/A%zz", "/%41%zz"}},
      {"file:///%e2%99%AB", {"/♫", "/%e2%99%AB"}},
      {"file:///a%2523", {"/a%23", "/a%2523"}},
      {"file:///a%00b", {"/a%00b"}},
      {std::string("file:///a\0b", 11), {}},
      {"/music/a%20b#1", {"/music/a%20b#1"}},
      // Another host or another scheme:
      {"file://nas/a.mp3", {}},
      {"file:a.mp3", {}},
      {"file://localhost", {}},
      {"file:", {}},
      {"http://localhost/a.mp3", {}},
      {"files:///a.mp3", {}},
      {"", {}}};
  for (const auto& [url, paths] : rows) EXPECT_EQ(pathsOfFileUrl(url), paths) << url;
}

TEST(AnUntitledAddress, IsCalledByItsLastComponent) {
  for (const auto& [url, name] : Rows{{"file:///m/So%20%231.mp3", "So #1.mp3"},
                                      {"file:///m/100% #1?.mp3", "100% #1?.mp3"},
                                      {"/m/a: b/c.mp3", "c.mp3"},
                                      {"file:///m/AC%2FDC", "AC/DC"},
                                      {"file:///m/album//", "album"},
                                      {"https://host/live/radio.ogg?key=1/2#x", "radio.ogg"},
                                      {"http://host:8000/", "host:8000"},
                                      {"cdda:2", "cdda:2"},
                                      {"file:///", ""},
                                      {"", ""},
                                      {"file:///m/Gr%f6%DFe %F0%9F%8E%B5", "Gr\uFFFD\uFFFDe 🎵"}}) {
    EXPECT_EQ(baseNameOfUrl(url), name) << url;
  }
}

TEST(AStampedText, IsShownWithoutItsTimeStamps) {
  const Rows rows{
      {"[00:12]A\n[00:12.34]B\n[00:12.345]C\n[00:12:34]D\n[123:59.99]E\n", "A\nB\nC\nD\nE\n"},
      {"[00:01.00][00:09.00] [00:17.00]Refrain", "Refrain"},
      {"  [00:01.00]  One two ", "One two "},
      {"[ti:x]\r\n[00:01]One\r\n[00:02]\r[00:03]Two", "One\r\n\rTwo"},
      {"\xEF\xBB\xBF[00:01]One", "One"},
      {"[00:01.00] <00:01.00> One <00:01.50> two<00:02.00>fold <00:02.50>", "One twofold"},
      {"<00:01.00>One <00:01.500>two", "One two"},
      {"[ar:A]\n[TI: B ] \n[offset:+100]\n\n[00:01]One", "\nOne"},
      {"[Chorus]\n[Verse 1: A]\n[instrumental]\n[00:01]One",
       "[Chorus]\n[Verse 1: A]\n[instrumental]\nOne"},
      {"[00:01]Meet me at [12:30] <sharp>", "Meet me at [12:30] <sharp>"},
      {"[00:01]One\n[0:1]\n[00:02\n[:02]\n[1234:00]\n[00:02.]\n[00:02.1234]",
       "One\n[0:1]\n[00:02\n[:02]\n[1234:00]\n[00:02.]\n[00:02.1234]"}};
  for (const auto& [given, shown] : rows) EXPECT_EQ(withoutTimeStamps(given), shown);
}

TEST(AnUnstampedText, IsShownAsItIs) {
  for (const char* text :
       {"[Chorus]\r\n [instrumental]\r\rLa \n", "[ar:Nobody]\n[length: 3:00]\nLa",
        "From <10:30>\nto [11:30]", "\xFF[\xEF\xBB", ""}) {
    EXPECT_EQ(withoutTimeStamps(text), text);
  }
}

TEST(AHugeText, IsShownInLinearTime) {
  std::string text = "[00:01]One\n";
  for (const char* part : {"<", "[", "[00:0", "<00:01.0", "\r", " "}) {
    for (int index = 0; index < 200'000; ++index) text += part;
  }
  EXPECT_EQ(withoutTimeStamps(text).size(), text.size() - std::string("[00:01]").size());
}

TEST(ALyricsFile, IsReadAsUtf8) {
  const Rows rows{{"Größe ♫ 🎵", "Größe ♫ 🎵"},
                  {"\xEF\xBB\xBFgrün", "grün"},
                  {"gr\xFCn \x80", "grün \u0080"},
                  {std::string("\xFF\xFEg\0\xFC\0\x3C\xD8\xB5\xDF", 10), "gü🎵"},
                  {std::string("\xFE\xFF\0g\0\xFC\xD8\x3C\xDF\xB5\0", 11), "gü🎵\uFFFD"},
                  {std::string("\xFE\xFF\xDF\xB5\0a", 6), "\uFFFDa"},
                  {"", ""}};
  for (const auto& [bytes, text] : rows) {
    EXPECT_EQ(textOfFile(std::as_bytes(std::span(bytes))), text);
  }
}

constexpr auto kMonth = microseconds(24h * 31).count();

using Texts = std::vector<std::string>;

TrackMetadata metadataOf(std::vector<Property> entries) {
  const PropertyValue metadata{PropertyMap(std::move(entries))};
  return readTrackMetadata(&metadata);
}

struct TimeRow {
  PropertyValue value;
  std::optional<microseconds> length;
  std::optional<microseconds> position;
};

TEST(ATime, CountsWhenItCanBeOneAndIsNeverNegative) {
  // A negative number, a huge one, and one of months are no lengths, whatever their type.
  const std::vector<TimeRow> rows{{{INT64_C(60'029'388)}, 60'029'388us, 60'029'388us},
                                  {{UINT64_C(5)}, 5us, 5us},
                                  {{2.5e6}, 2'500'000us, 2'500'000us},
                                  {{INT64_C(0)}, {}, 0us},
                                  {{INT64_C(-1)}, {}, 0us},
                                  {{-3.0}, {}, 0us},
                                  {{UINT64_MAX}, {}, 0us},
                                  {{INT64_MAX}, {}, microseconds::max()},
                                  {{kMonth}, {}, microseconds(kMonth)},
                                  {{NAN}, {}, {}},
                                  {{INFINITY}, {}, {}},
                                  {{1e300}, {}, 9223372036854774784us},
                                  {{"60000000"s}, {}, {}},
                                  {{}, {}, {}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows.data());
    EXPECT_EQ(metadataOf({{"mpris:length", row.value}}).length, row.length);
    EXPECT_EQ(positionOf(&row.value), row.position);
  }
}

TEST(AVolume, IsRoundedToTheScaleAndFullWhereThereIsNone) {
  const std::vector<std::pair<PropertyValue, int>> rows{
      {{0.33299}, 33}, {{3.0}, 100},  {{-1.0}, 0},        {{0.004}, 0},
      {{NAN}, 100},    {{"x"s}, 100}, {{INT64_C(1)}, 100}};
  for (const auto& [said, volume] : rows) EXPECT_EQ(volumeOf(&said), volume);
  EXPECT_EQ(volumeOf(nullptr), 100);
}

TEST(ARating, IsBroughtToPointsFromTheScaleItIsOn) {
  const std::vector<std::pair<double, int>> rows{{0, 0},    {0.8, 80}, {1, 100},    {2, 40},
                                                 {4.5, 90}, {5, 100},  {5.5, 55},   {7, 70},
                                                 {10, 100}, {80, 80},  {1000, 100}, {-1, 0}};
  for (const auto& [rating, points] : rows) EXPECT_EQ(ratingPoints(rating), points) << rating;
}

TEST(AState, IsKnownInAnyCaseAndOtherwiseStopped) {
  using enum PlayerState;
  for (const auto& [text, state] : {std::pair("Playing", Playing),
                                    {"PAUSED", Paused},
                                    {"stopped", Stopped},
                                    {"Buffering", Stopped}}) {
    const PropertyValue status{text};
    EXPECT_EQ(stateOf(&status), state) << text;
  }
  EXPECT_EQ(stateOf(nullptr), Stopped);
}

TEST(ATrack, TakesItsTextsFromWhateverTypeAPlayerSends) {
  const auto track = metadataOf({{"xesam:title", {INT64_C(1999)}},
                                 {"xesam:artist", {Texts{"One", "", "Two"}}},
                                 {"xesam:album", {UINT64_C(7)}},
                                 {"xesam:userRating", {INT64_C(4)}},
                                 {"mpris:artUrl", {1.0}}});
  EXPECT_EQ(track.title, "1999");
  EXPECT_EQ(track.artist, "One, Two");
  EXPECT_EQ(track.album, "7");
  EXPECT_EQ(track.userRating, 4.0);
  EXPECT_EQ(track.artUrl, "");

  EXPECT_EQ(metadataOf({{"xesam:artist", {"Alone"s}}}).artist, "Alone");
  const PropertyValue noArtist{Texts{""}};
  EXPECT_EQ(metadataOf({{"xesam:artist", noArtist}, {"xesam:albumArtist", {Texts{"Band"}}}}).artist,
            "Band");
}

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
  EXPECT_EQ(textOf(readArtwork(server.url())), picture_);
  ::setenv("http_proxy", ("http://user:secret@" + server.host()).c_str(), 1);
  EXPECT_TRUE(readArtwork("http://example.test/c"));
  for (const auto& request : server.requests()) {
    EXPECT_THAT(request, testing::Not(testing::ContainsRegex("Cookie:|Authorization:")));
  }
}

}  // namespace
}  // namespace Corvella
