#include <QDBusConnection>
#include <QImage>
#include <QSize>
#include <QString>
#include <QTest>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "host/controls/Theme.h"
#include "host/program/SingleInstance.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/RealMpv.h"
#include "tests/support/TaggedTrack.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/XServer.h"

namespace Corvella {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

const Texts kOffscreen{"QT_QPA_PLATFORM=offscreen"};
const Texts kNoBus{"DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere"};

struct Outcome {
  std::optional<int> status;
  std::string output;
  std::string errors;
};

/// A user with a runtime folder and a session bus of their own, and without a display.
class AUser : public testing::Test {
 protected:
  /// Starts the program in surroundings that differ from that by some variables.
  Process start(Texts command, const Texts& different = {}) const {
    Texts surroundings{"--unset=QT_QPA_PLATFORM",
                       "DISPLAY=", "WAYLAND_DISPLAY=", "XDG_RUNTIME_DIR=" + folder_.path().string(),
                       "DBUS_SESSION_BUS_ADDRESS=" + bus_.address()};
    surroundings.insert(surroundings.end(), different.begin(), different.end());
    command.insert(command.begin(), CORVELLA_PROGRAM);
    return Process(command, surroundings);
  }
  /// Opens the window of the embedded player where nobody sees it.
  Process open() const { return start({"--player", "embedded"}, kOffscreen); }
  /// Runs the program to its end.
  Outcome run(const Texts& options, const Texts& different = {}) const {
    auto program = start(options, different);
    const auto status = program.wait();
    return {status, program.output(), program.errors()};
  }
  /// Waits until the first instance obeys.
  bool isListening() const {
    return eventually([&] { return SingleInstance(connection_).tellFirst("Open"); });
  }

  const TemporaryFolder folder_;
  PrivateBus bus_;
  // Qt keeps connections by their names, and the test before had another bus.
  const QString address_ = QString::fromStdString(bus_.address());
  const QDBusConnection connection_ = QDBusConnection::connectToBus(address_, address_);
};

TEST_F(AUser, SeesATrackOfARealPlayerPrinted) {
  const auto track = folder_.path() / "track.flac";
  makeTrack(track, {.title = "Dawn",
                    .artist = "The Larks",
                    .album = "Morning",
                    .lyrics = "one\ntwo\nthree",
                    .cover = CORVELLA_RESOURCES "/covers/harbour.png",
                    .seconds = 60});
  const RealMpv mpv(bus_.address(), {.files = {track}, .paused = true});

  const auto printed = run({"--print"});
  EXPECT_EQ(printed.status, 0);
  EXPECT_EQ(printed.output,
            "songTitle: Dawn\nsongArtistAndAlbum: The Larks - Morning\nalbumArtView: 288 x 288\n"
            "songRatingIndicator: 0 of 5\nplayButton: \u25b6\nsoundVolume: 100\n"
            "progressBar: 0 of 60\ntoggleLyricsButton: Show Lyrics\nlyricsView:  (0 lines)\n"
            "preferredContentSize: 320 x 285\n");
  EXPECT_THAT(
      run({"--print", "--lyrics"}).output,
      AllOf(HasSubstr("toggleLyricsButton: Hide Lyrics\n"),
            HasSubstr("lyricsView: one (3 lines)\n"), testing::EndsWith("\none\ntwo\nthree\n")));
  EXPECT_THAT(run({"--list-players"}).output, HasSubstr("mpv (paused)\n"));
  EXPECT_EQ(run({"--print", "--player", "mpv"}).output, printed.output);
  EXPECT_THAT(run({"--print", "--json"}).output, HasSubstr("\"volume\":100}"));
  const auto picture = folder_.path() / "view.png";
  const auto missing = run({"--print", "--player", "other"});
  const auto drawn = run({"--snapshot", picture, "--player", "other"});
  EXPECT_THAT(missing.output,
              HasSubstr("songTitle: No Song Playing\nsongArtistAndAlbum: N/A - N/A\n"));
  EXPECT_TRUE(std::filesystem::exists(picture));
  for (const auto& outcome : {missing, drawn}) {
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors,
              "corvella: the player 'other' is not on the session bus; there are: mpv (paused)\n");
  }
}

TEST_F(AUser, SeesJsonPrintedAgainAtEachChange) {
  FakeMprisPlayer player(bus_.address(), "fake");
  player.set("Identity", "A \"Fake\"");
  player.remove("Volume");
  player.show("One", "Paused");
  auto program = start({"--print", "--json", "--follow", "--lyrics"});
  ASSERT_TRUE(eventually([&] { return player.received("Get Position") > 0; }));
  const auto looks = player.received("Get Position");
  player.show("Two\u202e", "Playing");
  player.announce("Metadata");
  player.announce("Metadata");
  ASSERT_TRUE(eventually([&] { return player.received("Get Position") > looks; }));
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
  const auto line = [](const std::string& state, const std::string& title) {
    return R"({"album":"Somewhere","artist":"Someone, Else","length":215.5,"lyrics":"",)"
           R"("player":"A \"Fake\"","position":0,"rating":0,"state":")" +
           state + R"(","title":")" + title + "\",\"volume\":null}\n";
  };
  EXPECT_EQ(program.output(), line("paused", "One") + line("playing", R"(Two\u202e)"));
}

TEST_F(AUser, SeesTheDisplayPrintedAgainWhenMoreThanThePositionHasChanged) {
  FakeMprisPlayer player(bus_.address(), "fake");
  player.show("One", "Paused");
  auto program = start({"--print", "--follow"});
  const auto prints = [&](const std::string& line) {
    return eventually([&] { return program.output().find(line) != std::string::npos; });
  };
  ASSERT_TRUE(prints("progressBar: 0 of 215.5\n"));
  const auto looks = player.received("Get Position");
  player.set("Position", INT64_C(5'000'000));
  player.announce("Metadata");
  ASSERT_TRUE(eventually([&] { return player.received("Get Position") > looks; }));
  player.set("Volume", 0.5);
  player.announce("Volume");
  ASSERT_TRUE(prints("soundVolume: 50\n"));
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
  const auto output = program.output();
  EXPECT_EQ(output.find("songTitle", output.find("songTitle") + 1), output.rfind("songTitle"));
}

TEST_F(AUser, SeesNothingButTheDisplayPrintedWhileThePlayerFails) {
  FakeMprisPlayer player(bus_.address(), "fake");
  player.behave({.hangs = true});
  const auto printed = run({"--print", "--player", "fake"});
  EXPECT_EQ(printed.status, 1);
  EXPECT_THAT(printed.output, AllOf(testing::StartsWith("songTitle: No Song Playing\n"),
                                    testing::Not(HasSubstr("NSAppleScript"))));
  EXPECT_THAT(printed.errors, AllOf(HasSubstr("NSAppleScriptErrorNumber = -1712"),
                                    HasSubstr("'fake' does not answer; there are: fake")));
}

TEST_F(AUser, IsToldByTheStatusAndInWordsWhatHappened) {
  struct Row {
    Texts options;
    int status;
    std::string output;
    std::string errors;
  };
  const auto file = (folder_.path() / "missing" / "view.png").string();
  const auto pipe = (folder_.path() / "pipe").string();
  ASSERT_EQ(::mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
  const std::string nothing = "^$";
  const std::string embedded = "albumArtView: 288 x 288\n.*Size: 320 x 285\n";
  const std::vector<Row> rows{
      {{"--version"}, 0, "^corvella [0-9.]+\n$", nothing},
      {{"--help"}, 0, "--player.*  print what the panel shows, once, and end\n", nothing},
      {{"--print"}, 0, embedded, "embedded"},
      {{"--print", "--player", "AUTO"}, 0, embedded, "embedded"},
      {{"--print", "--player", "Embedded"}, 0, embedded, nothing},
      {{"--print", "--player", "mpv"}, 1, "", "session bus"},
      {{"--shiny"}, 2, nothing, "shiny.*Usage:"},
      {{"--hidden", "--player", "embedded"}, 1, nothing, "no display server"},
      {{"--snapshot", file, "--player", "embedded"}, 1, nothing, file + ".*No such file"},
      {{"--snapshot", pipe, "--player", "embedded"}, 1, nothing, pipe + ".*No such device"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.options));
    const auto outcome = run(row.options, kNoBus);
    EXPECT_EQ(outcome.status, row.status);
    EXPECT_THAT(outcome.output, testing::ContainsRegex(row.output));
    EXPECT_THAT(outcome.errors, testing::ContainsRegex(row.errors));
  }
}

TEST_F(AUser, IsToldThatTheOutputIsClosed) {
  const auto fifo = (folder_.path() / "fifo").string();
  // The last reader of the pipe goes before the program comes.
  Process program({"sh", "-c", "mkfifo $0 && exec 3<>$0 4>$0 3<&- && exec $1 --version >&4", fifo,
                   CORVELLA_PROGRAM});
  Process full({"sh", "-c", "exec $0 --print --player embedded >/dev/full", CORVELLA_PROGRAM},
               kNoBus);
  for (auto* const each : {&program, &full}) {
    EXPECT_EQ(each->wait(), 1);
    EXPECT_THAT(each->errors(), HasSubstr("cannot write to standard output"));
  }
}

TEST_F(AUser, EndsWhatFollowsThePlayerByNotReadingOn) {
  Process program({"bash", "-c",
                   "$0 --print --json --follow --player embedded | read; echo ${PIPESTATUS[*]}",
                   CORVELLA_PROGRAM});
  EXPECT_EQ(program.wait(), 0) << program.errors();
  EXPECT_EQ(program.output(), "0 0\n");
  EXPECT_EQ(program.errors(), "");
}

TEST_F(AUser, HasOneInstanceThatLaterOnesTellWhatTheyAreStartedFor) {
  SingleInstance first(connection_);
  ASSERT_EQ(first.claimName(), SingleInstance::Role::First);
  Texts messages;
  QObject::connect(&first, &SingleInstance::openAsked, [&] { messages.emplace_back("open"); });
  QObject::connect(&first, &SingleInstance::toggleAsked, [&] { messages.emplace_back("toggle"); });
  QObject::connect(&first, &SingleInstance::playerAsked,
                   [&](const QString& player) { messages.push_back(player.toStdString()); });
  QObject::connect(&first, &SingleInstance::quitAsked, [&] { messages.emplace_back("quit"); });
  for (const auto& options :
       std::vector<Texts>{{}, {"--toggle"}, {"--player", "vlc"}, {"--quit"}}) {
    auto later = start(options, kOffscreen);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !later.running(); },
                                longestWait / std::chrono::milliseconds{1}));
    EXPECT_EQ(later.wait(), 0) << later.errors();
  }
  EXPECT_THAT(messages, testing::ElementsAre("open", "toggle", "vlc", "open", "quit"));
}

TEST_F(AUser, IsToldWhenTheFirstInstanceDoesNotAnswer) {
  ASSERT_TRUE(QDBusConnection(connection_).registerService("org.corvella.Corvella"));
  const auto later = run({"--player", "embedded"}, kOffscreen);
  EXPECT_EQ(later.status, 1);
  EXPECT_THAT(later.errors, HasSubstr("does not answer"));
}

TEST_F(AUser, WithoutASessionBusIsToldThatInstancesDoNotKnowOfEachOther) {
  auto program = start({"--player", "embedded"}, {kOffscreen[0], kNoBus[0]});
  EXPECT_TRUE(eventually([&] { return program.errors().ends_with('\n'); }));
  EXPECT_THAT(program.errors(), HasSubstr("no session bus"));
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(AUser, StartsAnewAfterAnInstanceThatASignalEnded) {
  for (const auto& [signal, status] :
       {std::pair(SIGKILL, 128 + SIGKILL), {SIGTERM, 0}, {SIGINT, 0}}) {
    auto instance = open();
    ASSERT_TRUE(isListening());
    instance.kill(signal);
    EXPECT_EQ(instance.wait(), status);
    EXPECT_EQ(instance.errors(), "");
  }
}

TEST_F(AUser, FindsTheFirstInstanceOnABusThatHasComeBack) {
  auto first = open();
  ASSERT_TRUE(isListening());
  bus_.stop();
  bus_.start();
  const auto again = QDBusConnection::connectToBus(address_, address_ + "again");
  EXPECT_TRUE(eventually([&] { return SingleInstance(again).tellFirst("Quit"); }));
  EXPECT_EQ(first.wait(), 0);
}

TEST_F(AUser, GetsAWindowThoughTheSessionBusDoesNotAnswer) {
  bus_.freeze();
  auto program = start({}, kOffscreen);
  EXPECT_TRUE(eventually([&] { return program.errors().ends_with("will not find this one\n"); }));
  EXPECT_THAT(run({"--quit"}).errors, HasSubstr("the session bus does not answer"));
  EXPECT_THAT(run({"--print"}).errors, HasSubstr("the session bus does not answer"));
  bus_.thaw();
  EXPECT_TRUE(isListening()) << "the window came, and the name is taken later";
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(AUser, MaySwitchTheRunningInstanceToAnotherPlayer) {
  FakeMprisPlayer player(bus_.address(), "other");
  player.show("A Title", "Playing");
  auto first = open();
  ASSERT_TRUE(isListening());
  EXPECT_EQ(player.received("Get Metadata"), 0);
  EXPECT_THAT(run({"--list-players"}).output, HasSubstr("other (playing)\n"));
  const auto later = run({"--player", "other"}, kOffscreen);
  EXPECT_EQ(later.status, 0) << later.errors;
  EXPECT_TRUE(eventually([&] { return player.received("Get Metadata") > 0; }));

  for (int i = 0; i < 2; ++i) EXPECT_EQ(run({"--quit"}).status, 0) << "once ended, nobody is told";
  EXPECT_EQ(first.wait(), 0);
}

TEST_F(AUser, HasTheDesktopStartTheProgramOrNoMore) {
  const auto config = folder_.path() / "config";
  const Texts there{"XDG_CONFIG_HOME=" + config.string()};
  const auto entry = config / "autostart" / "corvella.desktop";
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(run({"--autostart", "on"}, there).status, 0);
    EXPECT_TRUE(std::filesystem::exists(entry));
  }
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(run({"--autostart", "off"}, there).status, 0);
    EXPECT_FALSE(std::filesystem::exists(entry));
  }
  for (const auto* const unfit : {"relative", CORVELLA_PROGRAM}) {
    const auto outcome = run({"--autostart", "on"}, {std::string("XDG_CONFIG_HOME=") + unfit});
    EXPECT_EQ(outcome.status, 1) << unfit;
    EXPECT_EQ(outcome.output, "");
  }
}

TEST_F(AUser, MayStartAnInstanceWithoutStandardStreams) {
  const Process program({"sh", "-c", "exec $0 --player embedded <&- >&- 2>&-", CORVELLA_PROGRAM},
                        {kOffscreen[0], "DBUS_SESSION_BUS_ADDRESS=" + bus_.address()});
  ASSERT_TRUE(isListening());
  for (const auto* stream : {"0", "1", "2"}) {
    const auto place = "/proc/" + std::to_string(program.id()) + "/fd/" + stream;
    EXPECT_EQ(std::filesystem::read_symlink(place), "/dev/null");
  }
}

TEST_F(AUser, GetsASnapshotWithoutADisplay) {
  const auto file = (folder_.path() / "view.png").string();
  const std::vector<std::pair<Texts, QSize>> rows{{{}, {344, 341}},
                                                  {{"--scale", "0.5"}, {172, 170}},
                                                  {{"--scale", "2"}, {688, 682}},
                                                  {{"--lyrics"}, {344, 500}}};
  for (auto [options, size] : rows) {
    SCOPED_TRACE(testing::PrintToString(options));
    options.insert(options.end(), {"--player", "embedded", "--snapshot", file});
    const auto outcome = run(options);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    const QImage image(QString::fromStdString(file));
    EXPECT_EQ(image.width(), size.width());
    EXPECT_GE(image.height(), size.height());
    // The last thing drawn is the panel below the card.
    const auto scale = image.width() / 344.0;
    const auto above = [&](int pixels) { return image.height() - qRound(pixels * scale); };
    EXPECT_EQ(image.pixelColor(image.width() / 2, above(6)), theme::panel());
    EXPECT_EQ(image.pixelColor(image.width() / 2, above(20)), theme::card());
    if (scale < 1) continue;  // Made smaller, the rounded corner of the card is blurred.
    EXPECT_EQ(image.pixelColor(qRound(13 * scale), qRound(45 * scale)), theme::panel());
  }
}

TEST_F(AUser, WhoOpensTheWindowWithoutADisplayGetsASnapshotAndItsText) {
  for (const auto& display : {Texts{}, Texts{"QT_QPA_PLATFORM=xcb", "DISPLAY=:7654"}}) {
    const auto outcome = run({"--player", "embedded"}, display);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("preferredContentSize: 320 x 285\n"));
    const auto& notice = outcome.errors;
    EXPECT_THAT(notice, HasSubstr("no display server"));
    const auto start = notice.find("drew ") + std::string("drew ").size();
    const auto file = notice.substr(start, notice.find(" instead") - start);
    EXPECT_FALSE(QImage(QString::fromStdString(file)).isNull()) << notice;
  }
}

/// A user in front of an X screen.
class AUserOfX11 : public AUser {
 protected:
  static std::string optionsOf(const char* sanitizer) {
    return std::string(sanitizer) + "=" + qgetenv(sanitizer).toStdString();
  }
  /// What the server tells of the window; empty while none can be seen.
  std::string window() const {
    const auto told = server_.outputOf({"xwininfo", "-name", "Corvella"});
    return told.find("IsViewable") != std::string::npos ? told : std::string();
  }
  bool isSeen() const { return !window().empty(); }

  const XServer server_;
  // The libraries of X11 copy parts of texts that do not end in a zero, which the address
  // sanitizer's strictest check refuses, and D-Bus's keeps memory to its end. They are built
  // without the thread sanitizer, which sees races in them. Our own code is watched offscreen.
  const Texts screen_{"QT_QPA_PLATFORM=xcb", "DISPLAY=" + server_.display(),
                      optionsOf("ASAN_OPTIONS") + ":strict_string_checks=0:detect_leaks=0",
                      optionsOf("TSAN_OPTIONS") + ":report_bugs=0"};
};

TEST_F(AUserOfX11, SeesAWindowAtTheTopRightOfTheScreen) {
  auto program = start({"--player", "embedded"}, screen_);
  ASSERT_TRUE(eventually([&] { return isSeen(); })) << program.errors();
  EXPECT_THAT(window(), HasSubstr("Corners:  +928+8  -8+8"));
  EXPECT_EQ(run({"--toggle"}, screen_).status, 0);
  EXPECT_TRUE(eventually([&] { return !isSeen(); }));
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), 0) << program.errors();
}

TEST_F(AUserOfX11, IsShownTheWindowWhereverTheyAreAndWhateverCoversIt) {
  const auto settings = folder_.path() / "openbox.xml";
  std::ofstream(settings) << R"(<openbox_config xmlns="http://openbox.org/3.4/rc"><applications>
      <application title="Event Tester"><fullscreen>yes</fullscreen><focus>yes</focus></application>
      </applications></openbox_config>)";
  const Process manager({"openbox", "--config-file", settings}, {screen_[1]});
  const auto tells = [&](Texts what, const std::string& text) {
    what.insert(what.begin(), "xprop");
    return eventually([&] { return server_.outputOf(what).find(text) != std::string::npos; });
  };
  ASSERT_TRUE(tells({"-root", "_NET_CURRENT_DESKTOP"}, "= 0")) << manager.errors();
  const auto program = start({"--player", "embedded"}, screen_);
  ASSERT_TRUE(tells({"-root", "_NET_CLIENT_LIST"}, "# 0x")) << program.errors();
  const auto clients = server_.outputOf({"xprop", "-root", "_NET_CLIENT_LIST"});
  const auto id = clients.substr(clients.find("0x"), clients.find('\n') - clients.find("0x"));
  const Texts active{"-root", "_NET_ACTIVE_WINDOW"};
  ASSERT_TRUE(tells(active, id));

  server_.outputOf({"xdotool", "set_desktop", "1"});
  ASSERT_TRUE(eventually([&] { return !isSeen(); }));
  run({"--toggle"}, screen_);
  EXPECT_TRUE(eventually([&] { return isSeen(); }));
  ASSERT_TRUE(tells(active, id));
  EXPECT_TRUE(tells({"-root", "_NET_CURRENT_DESKTOP"}, "= 1"));
  run({"--toggle"}, screen_);
  ASSERT_TRUE(eventually([&] { return !isSeen(); }));
  run({"--toggle"}, screen_);
  ASSERT_TRUE(tells(active, id));
  EXPECT_TRUE(tells({"-id", id, "_NET_WM_STATE"}, "SKIP_TASKBAR, _NET_WM_STATE_SKIP_PAGER"));

  const Process film({"xev"}, {screen_[1]});
  // The manager raises it only once it has the focus, and says that it fills the screen before it
  // does. The panel is the only other window.
  ASSERT_TRUE(eventually([&] {
    const auto told = server_.outputOf({"xwininfo", "-name", "Event Tester"});
    const auto stack = server_.outputOf({"xprop", "-root", "_NET_CLIENT_LIST_STACKING"});
    return told.find("Width: 1280") != std::string::npos &&
           told.find("IsViewable") != std::string::npos &&
           stack.find(id + ", 0x") != std::string::npos;
  })) << film.errors();
  run({"--toggle"}, screen_);
  EXPECT_TRUE(tells(active, id));
  EXPECT_TRUE(isSeen());
}

}  // namespace
}  // namespace Corvella
