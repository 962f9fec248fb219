#include <cmath>
#include <csignal>
#include <filesystem>
#include <limits>
#include <map>
#include <ostream>
#include <system_error>

#include <gtest/gtest.h>

#include "tests/support/BusClient.h"
#include "tests/support/Eventually.h"
#include "tests/support/FakeMprisPlayer.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/RealMpv.h"
#include "tests/support/RowName.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using Texts = std::map<std::string, std::string>;
using Value = FakeMprisPlayer::Value;

struct ValueCase {
  const char* name;
  Value value;
  const char* text;
};

void PrintTo(const ValueCase& row, std::ostream* out) {
  *out << row.name;
}

class AFakePlayerWithAValue : public testing::TestWithParam<ValueCase> {};

TEST_P(AFakePlayerWithAValue, SendsIt) {
  PrivateBus bus;
  FakeMprisPlayer player(bus.address(), "fake");
  BusClient client(bus.address());

  player.set("Position", GetParam().value);

  EXPECT_EQ(client.text(player.busName(), "Position"), GetParam().text);
  EXPECT_EQ(client.all(player.busName())["Position"], GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Types, AFakePlayerWithAValue,
    testing::Values(
        ValueCase{"Text", Value::text("Größe"), "Größe"},
        ValueCase{"ObjectPath", Value::objectPath("/a/b"), "/a/b"},
        ValueCase{"Boolean", Value::boolean(true), "true"},
        ValueCase{"Byte", Value::byte(255), "255"}, ValueCase{"Int16", Value::int16(-7), "-7"},
        ValueCase{"Int32", Value::int32(-70'000), "-70000"},
        ValueCase{"Int64", Value::int64(-5'000'000'000), "-5000000000"},
        ValueCase{"Uint32", Value::uint32(4'000'000'000), "4000000000"},
        ValueCase{"Uint64", Value::uint64(~std::uint64_t{0}), "18446744073709551615"},
        ValueCase{"NotANumber", Value::number(std::nan("")), "nan"},
        ValueCase{"Infinity", Value::number(-std::numeric_limits<double>::infinity()), "-inf"},
        ValueCase{"NoTexts", Value::texts({}), ""},
        ValueCase{"Bytes", Value::array("y", {Value::byte(1), Value::byte(2)}), "1, 2"},
        ValueCase{"Structure", Value::structure({Value::int32(1), Value::text("b")}), "1, b"},
        ValueCase{"ObjectPaths", Value::array("o", {Value::objectPath("/a")}), "/a"},
        ValueCase{"Nested",
                  Value::dictionary({{"in", Value::dictionary({{"x", Value::texts({"a", "b"})}})},
                                     {"out", Value::variant(Value::boolean(false))}}),
                  "in: x: a, b, out: false"}),
    rowName);

class AFakePlayer : public testing::Test {
 protected:
  PrivateBus bus;
  FakeMprisPlayer player{bus.address(), "fake"};
  BusClient client{bus.address()};
  BusClient hasty{bus.address(), 100ms};
  const std::string name = player.busName();
};

TEST_F(AFakePlayer, LeavesOutAMissingProperty) {
  player.remove("Volume", "org.example.Missing");

  EXPECT_EQ(client.get<double>(name, "Volume"), std::nullopt);
  EXPECT_EQ(client.lastError(), "org.example.Missing");
  EXPECT_FALSE(client.all(name).contains("Volume"));
  EXPECT_EQ(client.all(name, "org.mpris.MediaPlayer2"), (Texts{{"Identity", "fake"}}));
}

TEST_F(AFakePlayer, FollowsCommandsAndCountsThem) {
  player.reactTo("Next", {{"Metadata", Value::dictionary({{"xesam:title", Value::text("B")}})}});

  EXPECT_TRUE(client.call(name, "PlayPause"));
  EXPECT_EQ(client.text(name, "PlaybackStatus"), "Playing");
  EXPECT_TRUE(client.call(name, "PlayPause"));
  EXPECT_EQ(client.text(name, "PlaybackStatus"), "Paused");
  EXPECT_TRUE(client.call(name, "Next"));
  EXPECT_EQ(client.metadata(name)["xesam:title"], "B");

  EXPECT_EQ(player.received("PlayPause"), 2);
  EXPECT_EQ(player.received("Get PlaybackStatus"), 2);
  player.forgetCalls();
  EXPECT_TRUE(player.calls().empty());
}

TEST_F(AFakePlayer, RefusesWhatItIsToldToRefuse) {
  player.failWith("Play", "org.example.NotNow");

  EXPECT_FALSE(client.call(name, "Play"));
  EXPECT_EQ(client.lastError(), "org.example.NotNow");
  EXPECT_FALSE(client.call(name, "Dance"));
  EXPECT_EQ(client.lastError(), "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(AFakePlayer, RecordsWritesWithTheirTypes) {
  player.reactTo("Set Rating", {});

  EXPECT_TRUE(client.set(name, "Volume", 0.25));
  EXPECT_TRUE(client.set(name, "Rating", 0.8));
  EXPECT_FALSE(client.set(name, "Shade", 1));

  EXPECT_EQ(client.get<double>(name, "Volume"), 0.25);
  EXPECT_FALSE(client.all(name).contains("Rating"));
  const std::vector<FakeMprisPlayer::Write> expected{
      {"Volume", "d", "0.250000"}, {"Rating", "d", "0.800000"}, {"Shade", "d", "1.000000"}};
  EXPECT_EQ(player.writes(), expected);
}

TEST_F(AFakePlayer, LetsCallsPileUpWhileItHangs) {
  player.hang();
  EXPECT_EQ(hasty.text(name, "PlaybackStatus"), std::nullopt);
  EXPECT_FALSE(hasty.call(name, "Play"));
  EXPECT_EQ(player.received("Play"), 1);

  player.resume();

  EXPECT_EQ(hasty.text(name, "PlaybackStatus"), "Playing");
}

TEST_F(AFakePlayer, AnswersLate) {
  player.answerAfter(300ms);
  EXPECT_EQ(hasty.text(name, "PlaybackStatus"), std::nullopt);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(client.text(name, "PlaybackStatus"), "Stopped");
  EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
}

TEST_F(AFakePlayer, VanishesDuringACallAndComesBack) {
  player.vanishDuring("Get Position");
  EXPECT_EQ(client.text(name, "PlaybackStatus"), "Stopped");
  EXPECT_EQ(client.text(name, "Position"), std::nullopt);
  EXPECT_EQ(client.lastError(), "org.freedesktop.DBus.Error.NoReply");
  EXPECT_FALSE(client.ownsName(name));

  player.set("Position", Value::int64(5));
  player.takeName();

  EXPECT_EQ(client.get<std::int64_t>(name, "Position"), 5);
}

TEST_F(AFakePlayer, DropsAndTakesItsName) {
  player.dropName();
  EXPECT_FALSE(client.ownsName(name));
  player.takeName();
  EXPECT_TRUE(client.ownsName(name));
}

TEST_F(AFakePlayer, AnnouncesOnlyWhatItIsToldTo) {
  const auto listener = connectToBus(bus.address());
  std::string heard;
  const auto note = [](sd_bus_message* signal, void* text, sd_bus_error*) {
    auto& all = *static_cast<std::string*>(text);
    while (const auto part = nextValueAsText(signal)) all += *part + ";";
    return 0;
  };
  ASSERT_GE(sd_bus_match_signal(listener.get(), nullptr, name.c_str(), nullptr, nullptr,
                                "PropertiesChanged", note, &heard),
            0);

  player.set("Position", Value::int64(9));
  player.set("Volume", Value::number(0.5));
  player.remove("Metadata");
  player.announce({"Volume", "Metadata"});

  EXPECT_TRUE(eventually([&] {
    while (sd_bus_process(listener.get(), nullptr) > 0) continue;
    return !heard.empty();
  }));
  EXPECT_EQ(heard, "org.mpris.MediaPlayer2.Player;Volume: 0.500000;Metadata;");
}

TEST(APrivateBus, StartsOnlyWhatATestAdds) {
  PrivateBus bus;
  BusClient hasty(bus.address(), 100ms);
  const TemporaryFolder folder;
  const auto trace = folder.path() / "started";

  bus.addActivatableName("org.mpris.MediaPlayer2.sleeper", "/usr/bin/touch " + trace.string());
  EXPECT_EQ(hasty.text("org.mpris.MediaPlayer2.sleeper", "Position"), std::nullopt);

  EXPECT_TRUE(eventually([&] { return std::filesystem::exists(trace); }));
}

TEST(ASessionBus, IsTheInnermostOneInScope) {
  const auto seenByAProgram = [] {
    Process program({"printenv", "DBUS_SESSION_BUS_ADDRESS"});
    program.wait();
    return program.output();
  };
  const ScopedSessionBus outer("unix:path=/outer");
  {
    const ScopedSessionBus inner("unix:path=/inner");
    EXPECT_EQ(seenByAProgram(), "unix:path=/inner\n");
  }
  EXPECT_EQ(seenByAProgram(), "unix:path=/outer\n");
}

TEST(APrivateBus, EndsUnderItsClients) {
  PrivateBus bus;
  FakeMprisPlayer player(bus.address(), "fake");
  BusClient client(bus.address());

  bus.stop();

  EXPECT_FALSE(client.ownsName(player.busName()));
  EXPECT_THROW(BusClient(bus.address()), std::system_error);
}

TEST(AProcess, GivesItsOutputItsErrorsAndItsStatus) {
  Process process({"sh", "-c", "echo $HOME; echo no >&2; exit 3"}, {"HOME=/elsewhere"});
  EXPECT_EQ(process.wait(), 3);
  EXPECT_EQ(process.output(), "/elsewhere\n");
  EXPECT_EQ(process.errors(), "no\n");

  Process killed({"sleep", "1000"});
  killed.kill(SIGKILL);
  EXPECT_EQ(killed.wait(), 128 + SIGKILL);

  Process missing({"/nowhere/program"});
  EXPECT_EQ(missing.wait(), 127);
  EXPECT_EQ(missing.errors(), "/nowhere/program: No such file or directory\n");
}

TEST(ARealPlayer, PlaysAndObeysAndEnds) {
  PrivateBus bus;
  BusClient client(bus.address());
  const TemporaryFolder folder;
  const std::string file = folder.path() / "dawn.flac";
  Process ffmpeg({"ffmpeg", "-y", "-v", "error", "-f", "lavfi", "-i", "sine=duration=60",
                  "-metadata", "title=Dawn", "-metadata", "artist=The Larks", file});
  ASSERT_EQ(ffmpeg.wait(30s), 0) << ffmpeg.errors();
  RealMpv mpv(bus.address(), {.files = {file}, .paused = true});
  const RealMpv second(bus.address(), {});
  const auto& name = mpv.busName();

  EXPECT_EQ(client.metadata(name)["xesam:title"], "Dawn");
  EXPECT_EQ(client.metadata(name)["xesam:artist"], "The Larks");
  EXPECT_EQ(client.text(name, "PlaybackStatus"), "Paused");
  EXPECT_TRUE(client.call(name, "Play"));
  EXPECT_TRUE(eventually([&] { return client.text(name, "PlaybackStatus") == "Playing"; }));
  EXPECT_TRUE(client.set(name, "Volume", 0.5));
  EXPECT_TRUE(eventually([&] { return client.get<double>(name, "Volume") == 0.5; }));
  EXPECT_TRUE(client.ownsName(second.busName()));
  EXPECT_NE(second.busName(), name);

  mpv.kill();

  EXPECT_TRUE(eventually([&] { return !client.ownsName(name); }));
}

}  // namespace
}  // namespace Corvella
