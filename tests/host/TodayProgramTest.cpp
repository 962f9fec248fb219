#include <QDBusConnection>
#include <QGuiApplication>
#include <QImage>
#include <QSize>
#include <QString>
#include <QTest>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "host/controls/Theme.h"
#include "host/program/SingleInstance.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/RowName.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/XServer.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

/// A user with a runtime folder and a session bus of their own.
class AUser : public testing::Test {
 protected:
  std::vector<std::string> environment(const std::string& display) const {
    std::vector<std::string> variables{"XDG_RUNTIME_DIR=" + folder_.path().string(),
                                       "DBUS_SESSION_BUS_ADDRESS=" + bus_.address(),
                                       "DISPLAY=" + display};
    variables.push_back(display.empty() ? "QT_QPA_PLATFORM=offscreen" : "QT_QPA_PLATFORM=xcb");
    // The libraries of X11 copy parts of texts that do not end in a zero, which the address
    // sanitizer's strictest check refuses, and D-Bus's keeps memory to its end. They are built
    // without the thread sanitizer, which sees races in them. Our own code is watched offscreen.
    if (!display.empty()) {
      variables.push_back("ASAN_OPTIONS=" + qgetenv("ASAN_OPTIONS").toStdString() +
                          ":strict_string_checks=0:detect_leaks=0");
      variables.push_back("TSAN_OPTIONS=" + qgetenv("TSAN_OPTIONS").toStdString() +
                          ":report_bugs=0");
    }
    return variables;
  }
  Process start(std::vector<std::string> options = {}, const std::string& display = {}) const {
    options.insert(options.begin(), CORVELLA_PROGRAM);
    return Process(options, environment(display));
  }
  Process startEmbedded(std::vector<std::string> options = {},
                        const std::string& display = {}) const {
    options.insert(options.begin(), {"--player", "embedded"});
    return start(options, display);
  }
  /// Waits until the first instance obeys.
  bool isListening() const {
    return eventually([&] { return SingleInstance(connection_).tellFirst("Open"); });
  }

  const TemporaryFolder folder_;
  const PrivateBus bus_;
  // Qt keeps connections by their names, and the test before had another bus.
  const QString address_ = QString::fromStdString(bus_.address());
  const QDBusConnection connection_ = QDBusConnection::connectToBus(address_, address_);
};

TEST_F(AUser, HasOneInstanceThatLaterOnesTellWhatTheyAreStartedFor) {
  SingleInstance first(connection_);
  ASSERT_EQ(first.claimName(), SingleInstance::Role::First);
  std::vector<std::string> messages;
  QObject::connect(&first, &SingleInstance::openAsked, [&] { messages.emplace_back("open"); });
  QObject::connect(&first, &SingleInstance::toggleAsked, [&] { messages.emplace_back("toggle"); });
  QObject::connect(&first, &SingleInstance::playerAsked,
                   [&](const QString& player) { messages.push_back(player.toStdString()); });

  for (const auto& options :
       std::vector<std::vector<std::string>>{{}, {"--toggle"}, {"--player", "vlc"}}) {
    auto later = start(options);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !later.running(); }, longestWait / 1ms));
    EXPECT_EQ(later.wait(), 0) << later.errors();
  }
  EXPECT_THAT(messages, ElementsAre("open", "toggle", "vlc", "open"));
}

TEST_F(AUser, IsToldWhenTheFirstInstanceDoesNotAnswer) {
  ASSERT_TRUE(QDBusConnection(connection_).registerService("org.corvella.Corvella"));
  auto later = startEmbedded();
  EXPECT_EQ(later.wait(), 1);
  EXPECT_THAT(later.errors(), HasSubstr("does not answer"));
}

TEST_F(AUser, WithoutASessionBusIsToldThatInstancesDoNotKnowOfEachOther) {
  Process program({"env", "DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere", CORVELLA_PROGRAM,
                   "--player", "embedded"},
                  environment({}));
  EXPECT_TRUE(eventually([&] { return program.errors().ends_with('\n'); }));
  EXPECT_THAT(program.errors(), HasSubstr("no session bus"));
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(AUser, StartsAnewAfterAnInstanceThatASignalEnded) {
  for (const auto& [signal, status] :
       {std::pair(SIGKILL, 128 + SIGKILL), {SIGTERM, 0}, {SIGINT, 0}}) {
    auto instance = startEmbedded();
    ASSERT_TRUE(isListening());
    instance.kill(signal);
    EXPECT_EQ(instance.wait(), status);
    EXPECT_EQ(instance.errors(), "");
  }
}

TEST_F(AUser, MaySwitchTheRunningInstanceToAnotherPlayer) {
  FakeMprisPlayer player(bus_.address(), "other");
  player.show("A Title", "Playing");
  auto first = startEmbedded();
  ASSERT_TRUE(isListening());
  EXPECT_EQ(player.received("Get Metadata"), 0);
  auto later = start({"--player", "other"});
  EXPECT_EQ(later.wait(), 0) << later.errors();
  EXPECT_TRUE(eventually([&] { return player.received("Get Metadata") > 0; }));
  first.kill(SIGTERM);
  EXPECT_EQ(first.wait(), 0);
}

TEST_F(AUser, MayStartAnInstanceWithoutStandardStreams) {
  Process program({"sh", "-c", "exec $0 --player embedded <&- >&- 2>&-", CORVELLA_PROGRAM},
                  environment({}));
  ASSERT_TRUE(isListening());
  for (const auto* stream : {"0", "1", "2"}) {
    const auto place = "/proc/" + std::to_string(program.id()) + "/fd/" + stream;
    EXPECT_EQ(std::filesystem::read_symlink(place), "/dev/null");
  }
}

struct SnapshotRow {
  const char* name;
  std::vector<std::string> options;
  QSize size;
};

class ASnapshot : public AUser, public testing::WithParamInterface<SnapshotRow> {};

TEST_P(ASnapshot, IsDrawnWithoutADisplay) {
  const auto file = folder_.path() / "view.png";
  auto options = GetParam().options;
  options.insert(options.end(), {"--snapshot", file.string()});
  auto program = startEmbedded(options);
  EXPECT_EQ(program.wait(), 0) << program.errors();
  const QImage image(QString::fromStdString(file.string()));
  EXPECT_EQ(image.width(), GetParam().size.width());
  EXPECT_GE(image.height(), GetParam().size.height());
  // The last thing drawn is the panel below the card.
  const auto scale = image.width() / 344.0;
  const auto above = [&](int pixels) { return image.height() - qRound(pixels * scale); };
  EXPECT_EQ(image.pixelColor(image.width() / 2, above(6)), theme::panel());
  EXPECT_EQ(image.pixelColor(image.width() / 2, above(20)), theme::card());
  if (scale < 1) return;  // Made smaller, the rounded corner of the card is blurred.
  EXPECT_EQ(image.pixelColor(qRound(13 * scale), qRound(45 * scale)), theme::panel());
}

INSTANTIATE_TEST_SUITE_P(Host, ASnapshot,
                         testing::Values(SnapshotRow{"Folded", {}, {344, 341}},
                                         SnapshotRow{"Halved", {"--scale", "0.5"}, {172, 170}},
                                         SnapshotRow{"Doubled", {"--scale", "2"}, {688, 682}},
                                         SnapshotRow{"Unfolded", {"--lyrics"}, {344, 500}}),
                         rowName);

TEST_F(AUser, IsToldWhyASnapshotCannotBeWritten) {
  const auto file = folder_.path() / "missing" / "view.png";
  auto program = startEmbedded({"--snapshot", file.string()});
  EXPECT_EQ(program.wait(), 1);
  EXPECT_THAT(program.errors(), AllOf(HasSubstr(file.string()), HasSubstr("No such file")));
}

TEST_F(AUser, WithoutADisplayGetsASnapshotAndItsText) {
  const std::vector<std::vector<std::string>> surroundings{
      {"--unset=QT_QPA_PLATFORM", "DISPLAY=", "WAYLAND_DISPLAY="},
      {"QT_QPA_PLATFORM=xcb", "DISPLAY=:7654"}};
  for (auto command : surroundings) {
    command.insert(command.begin(), "env");
    command.insert(command.end(), {CORVELLA_PROGRAM, "--player", "embedded"});
    Process program(command, environment(":7654"));
    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(program.output(), HasSubstr("preferredContentSize: 320 x 285\n"));
    const auto notice = program.errors();
    const auto start = notice.find("drew ") + std::string("drew ").size();
    const auto file = notice.substr(start, notice.find(" instead") - start);
    EXPECT_FALSE(QImage(QString::fromStdString(file)).isNull()) << notice;
  }
}

TEST_F(AUser, SeesAWindowAtTheTopRightOfAnXScreen) {
  const XServer server;
  /// What the server tells of the window; empty while none can be seen.
  const auto window = [&] {
    Process look({"xwininfo", "-display", server.display(), "-name", "Corvella"});
    const bool isSeen = look.wait() == 0 && look.output().find("IsViewable") != std::string::npos;
    return isSeen ? look.output() : std::string();
  };
  auto program = startEmbedded({}, server.display());
  ASSERT_TRUE(eventually([&] { return !window().empty(); })) << program.errors();
  EXPECT_THAT(window(), HasSubstr("Corners:  +928+8  -8+8"));

  auto toggling = startEmbedded({"--toggle"}, server.display());
  EXPECT_EQ(toggling.wait(), 0);
  EXPECT_TRUE(eventually([&] { return window().empty(); }));
  program.kill(SIGTERM);
  EXPECT_EQ(program.wait(), 0) << program.errors();
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
