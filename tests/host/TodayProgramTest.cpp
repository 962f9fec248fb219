#include <QGuiApplication>
#include <QImage>
#include <QSize>
#include <QString>
#include <QTest>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "host/SingleInstance.h"
#include "host/Theme.h"
#include "tests/support/Eventually.h"
#include "tests/support/Process.h"
#include "tests/support/RowName.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/XServer.h"

namespace Corvella {
namespace {

using Message = SingleInstance::Message;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

/// A user with a runtime folder of their own, and no session bus.
class AUser : public testing::Test {
 protected:
  std::vector<std::string> environment(const std::string& display) const {
    std::vector<std::string> variables{"XDG_RUNTIME_DIR=" + folder_.path().string(),
                                       "DBUS_SESSION_BUS_ADDRESS=", "DISPLAY=" + display};
    variables.emplace_back(display.empty() ? "QT_QPA_PLATFORM=offscreen" : "QT_QPA_PLATFORM=xcb");
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
    options.insert(options.begin(), {CORVELLA_PROGRAM, "--player", "embedded"});
    return Process(options, environment(display));
  }
  /// Starts the program and waits until it listens.
  bool isListening() const {
    return eventually([&] { return exists(folder_.path() / "corvella.socket"); });
  }
  QString folder() const { return QString::fromStdString(folder_.path().string()); }

  const TemporaryFolder folder_;
};

TEST_F(AUser, HasOneInstanceThatLaterOnesTellWhatTheyAreStartedFor) {
  SingleInstance first(folder());
  ASSERT_TRUE(first.becomeFirst());
  std::vector<Message> messages;
  QObject::connect(&first, &SingleInstance::told,
                   [&](Message message) { messages.push_back(message); });
  first.listen();

  for (const auto& options : std::vector<std::vector<std::string>>{{}, {"--toggle"}}) {
    auto later = start(options);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !later.running(); }, 20'000));
    EXPECT_EQ(later.wait(), 0) << later.errors();
  }
  EXPECT_THAT(messages, ElementsAre(Message::Open, Message::Toggle));
}

/// Sends a datagram as any program of the user could, from a socket of that name if it is not
/// empty.
void sendDatagram(const std::filesystem::path& to, const std::string& text,
                  const std::string& from = {}) {
  const auto address = [](const std::string& name) {
    sockaddr_un result{};
    result.sun_family = AF_UNIX;
    name.copy(result.sun_path, sizeof result.sun_path);
    return result;
  };
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM, 0), "socket");
  if (!from.empty()) {
    const auto own = address(from);
    ASSERT_EQ(::bind(socket.number(), reinterpret_cast<const sockaddr*>(&own), sizeof own), 0);
  }
  const auto receiver = address(to.string());
  ASSERT_GE(::sendto(socket.number(), text.data(), text.size(), 0,
                     reinterpret_cast<const sockaddr*>(&receiver), sizeof receiver),
            0);
}

TEST_F(AUser, HasAnInstanceThatOutlivesStrangeMessages) {
  auto first = start();
  ASSERT_TRUE(isListening());
  const auto socket = folder_.path() / "corvella.socket";
  const std::string longest(107, 'x');
  for (const auto* text : {"", "open", "nonsense"}) {
    sendDatagram(socket, text);
    sendDatagram(socket, text, '\0' + longest);
  }
  sendDatagram(socket, std::string(5000, 'o'));
  auto second = start();
  EXPECT_EQ(second.wait(), 0) << second.errors();
  EXPECT_TRUE(first.running()) << first.errors();
}

TEST_F(AUser, IsToldWhenTheFirstInstanceDoesNotAnswer) {
  SingleInstance first(folder());
  ASSERT_TRUE(first.becomeFirst());
  auto later = start();
  EXPECT_EQ(later.wait(std::chrono::seconds(20)), 1);
  EXPECT_THAT(later.errors(), HasSubstr("does not answer"));
}

TEST_F(AUser, StartsAnewAfterAnInstanceThatWasKilled) {
  auto killed = start();
  ASSERT_TRUE(isListening());
  killed.kill(SIGKILL);
  ASSERT_TRUE(killed.wait().has_value());
  SingleInstance next(folder());
  EXPECT_TRUE(next.becomeFirst());
}

TEST_F(AUser, EndsAnInstanceCleanlyBySignals) {
  for (const int signal : {SIGTERM, SIGINT}) {
    auto first = start();
    ASSERT_TRUE(isListening());
    auto second = start();
    EXPECT_EQ(second.wait(), 0);
    EXPECT_TRUE(first.running());
    first.kill(signal);
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(first.errors(), "");
    EXPECT_FALSE(exists(folder_.path() / "corvella.socket"));
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
  auto program = start(options);
  EXPECT_EQ(program.wait(std::chrono::seconds(30)), 0) << program.errors();
  const QImage image(QString::fromStdString(file.string()));
  EXPECT_EQ(image.width(), GetParam().size.width());
  EXPECT_GE(image.height(), GetParam().size.height());
  // The last thing drawn is the panel below the card.
  const auto scale = image.width() / 344.0;
  const auto above = [&](int pixels) { return image.height() - qRound(pixels * scale); };
  EXPECT_EQ(image.pixelColor(image.width() / 2, above(6)), theme::panel());
  EXPECT_EQ(image.pixelColor(image.width() / 2, above(20)), theme::card());
}

INSTANTIATE_TEST_SUITE_P(Host, ASnapshot,
                         testing::Values(SnapshotRow{"Folded", {}, {344, 341}},
                                         SnapshotRow{"Halved", {"--scale", "0.5"}, {172, 170}},
                                         SnapshotRow{"Doubled", {"--scale", "2"}, {688, 682}},
                                         SnapshotRow{"Unfolded", {"--lyrics"}, {344, 500}}),
                         rowName);

TEST_F(AUser, IsToldWhyASnapshotCannotBeWritten) {
  const auto file = folder_.path() / "missing" / "view.png";
  auto program = start({"--snapshot", file.string()});
  EXPECT_EQ(program.wait(std::chrono::seconds(30)), 1);
  EXPECT_THAT(program.errors(), AllOf(HasSubstr(file.string()), HasSubstr("No such file")));
}

TEST_F(AUser, WithoutADisplayGetsASnapshotAndItsText) {
  const std::vector<std::vector<std::string>> surroundings{
      {"--unset=QT_QPA_PLATFORM", "DISPLAY=", "WAYLAND_DISPLAY="},
      {"QT_QPA_PLATFORM=xcb", "DISPLAY=:7654"}};
  for (auto command : surroundings) {
    command.insert(command.begin(), "env");
    command.insert(command.end(), {CORVELLA_PROGRAM, "--player", "embedded"});
    Process program(command, {"XDG_RUNTIME_DIR=" + folder_.path().string()});
    EXPECT_EQ(program.wait(std::chrono::seconds(30)), 0);
    EXPECT_THAT(program.output(), HasSubstr("preferredContentSize: 320 x 285\n"));
    const auto notice = program.errors();
    const auto start = notice.find("drew ") + std::string("drew ").size();
    const auto file = notice.substr(start, notice.find(" instead") - start);
    EXPECT_FALSE(QImage(QString::fromStdString(file)).isNull()) << notice;
  }
}

TEST_F(AUser, SeesAWindowAtTheTopRightOfAnXScreen) {
  const XServer server;
  auto program = start({}, server.display());
  std::string window;
  EXPECT_TRUE(eventually([&] {
    Process look({"xwininfo", "-display", server.display(), "-name", "Corvella"});
    if (look.wait() != 0) return false;
    window = look.output();
    return window.find("IsViewable") != std::string::npos;
  })) << program.errors();
  EXPECT_THAT(window, HasSubstr("Corners:  +928+8  -8+8"));

  auto toggling = start({"--toggle"}, server.display());
  EXPECT_EQ(toggling.wait(), 0);
  EXPECT_TRUE(eventually([&] {
    Process look({"xwininfo", "-display", server.display(), "-name", "Corvella"});
    return look.wait() != 0 || look.output().find("IsViewable") == std::string::npos;
  }));
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
