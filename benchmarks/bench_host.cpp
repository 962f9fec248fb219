// What the window costs, beside an empty window of Qt on the same display: its start, its memory,
// its processor time while it shows a player and while it is hidden, and how long it stalls while
// the player hangs. Arguments: the names of what is to be measured, all without any.

#include <QCoreApplication>
#include <QDBusConnection>
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "benchmarks/Ratio.h"
#include "benchmarks/SystemFigures.h"
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

using namespace SystemFigures;
using std::chrono::seconds;

/// A desktop: a display, a session bus and a user.
struct Desktop {
  std::vector<std::string> environment() const {
    return {"DISPLAY=" + server.display(), "QT_QPA_PLATFORM=xcb",
            "DBUS_SESSION_BUS_ADDRESS=" + bus.address(),
            "XDG_RUNTIME_DIR=" + folder.path().string()};
  }

  XServer server;
  PrivateBus bus;
  TemporaryFolder folder;
};

std::string besideThisProgram(const std::string& name) {
  return std::filesystem::canonical("/proc/self/exe").parent_path() / name;
}

/// The lines that are numbers.
std::vector<double> numbersAmong(const std::string& text) {
  std::vector<double> numbers;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.find_first_not_of("0123456789") == std::string::npos) {
      numbers.push_back(std::stod(line));
    }
  }
  return numbers;
}

/// A program with a window, and the numbers that its watch writes.
class Watched {
 public:
  static Watched emptyWindow(const Desktop& desktop, int stallSeconds = 0) {
    return Watched(desktop, "empty_window", stallSeconds, {});
  }
  static Watched corvella(const Desktop& desktop, const std::string& player, int stallSeconds = 0,
                          const std::string& work = "volume") {
    return Watched(desktop, "watched_corvella", stallSeconds, {player, work});
  }

  /// Waits for the first, second, … number. Scripts write their errors in between.
  double number(std::size_t index) {
    std::vector<double> numbers;
    const bool come = eventually([&] {
      numbers = numbersAmong(process_.output());
      return numbers.size() > index;
    });
    if (!come) throw std::runtime_error("a window shows nothing: " + process_.errors());
    return numbers[index];
  }
  bool wrote(const std::string& ending) const { return process_.output().ends_with(ending); }
  double microsecondsToFirstPaint() { return number(0); }
  double longestStallInMicroseconds() { return number(1); }
  pid_t id() const { return process_.id(); }

 private:
  Watched(const Desktop& desktop, const std::string& program, int stallSeconds,
          std::vector<std::string> more)
      : process_(command(program, stallSeconds, std::move(more)), desktop.environment()) {}

  static std::vector<std::string> command(const std::string& program, int stallSeconds,
                                          std::vector<std::string> more) {
    const std::chrono::nanoseconds now = std::chrono::steady_clock::now().time_since_epoch();
    more.insert(more.begin(), {besideThisProgram(program), std::to_string(now.count()),
                               std::to_string(stallSeconds)});
    return more;
  }

  Process process_;
};

const char* verdict(bool kept) {
  return kept ? "kept" : "MISSED";
}

void measureStart(const Desktop& desktop, const std::string& player, const std::string& what,
                  double atMost) {
  constexpr int kPairs = 60;
  std::vector<double> corvella;
  std::vector<double> empty;
  for (int i = 0; i < kPairs; ++i) {
    empty.push_back(Watched::emptyWindow(desktop).microsecondsToFirstPaint());
    corvella.push_back(Watched::corvella(desktop, player).microsecondsToFirstPaint());
  }
  printRatio("start to the first track of " + what + " / start of an empty window",
             ratioOf(corvella, empty), atMost);
}

/// A picture of 3000 x 3000 pixels with much detail.
std::filesystem::path makeCover(const TemporaryFolder& folder) {
  const auto file = folder.path() / "cover.jpg";
  Process ffmpeg({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=3000x3000",
                  "-frames:v", "1", file.string()});
  if (ffmpeg.wait() != 0) throw std::runtime_error(ffmpeg.errors());
  return file;
}

std::filesystem::path makeLongTrack(const TemporaryFolder& folder, const std::string& name,
                                    const std::filesystem::path& cover) {
  const auto file = folder.path() / name;
  makeTrack(file, {.title = "A Title",
                   .artist = "An Artist",
                   .album = "An Album",
                   .lyrics = "",
                   .cover = cover,
                   .seconds = 600});
  return file;
}

void measureMemory(const Desktop& desktop) {
  constexpr double kAtMost = 4;
  auto empty = Watched::emptyWindow(desktop);
  auto corvella = Watched::corvella(desktop, "auto");
  empty.microsecondsToFirstPaint();
  corvella.microsecondsToFirstPaint();
  std::this_thread::sleep_for(seconds(3));
  const auto own = anonymousMegabytes(corvella.id());
  const auto ofEmpty = anonymousMegabytes(empty.id());
  std::printf(
      "memory that no file backs, with a cover of 3000 x 3000: %.1f MB - %.1f MB of an empty "
      "window "
      "= %.1f MB; at most %g MB: %s\n",
      own, ofEmpty, own - ofEmpty, kAtMost, verdict(own - ofEmpty <= kAtMost));
}

void measurePlaying(const Desktop& desktop) {
  constexpr seconds kTime(30);
  constexpr double kAtMost = 0.15;
  auto corvella = Watched::corvella(desktop, "auto");
  corvella.microsecondsToFirstPaint();
  std::this_thread::sleep_for(seconds(2));
  const auto before = processorSeconds(corvella.id());
  std::this_thread::sleep_for(kTime);
  const auto percent =
      100 * (processorSeconds(corvella.id()) - before) / static_cast<double>(kTime.count());
  std::printf("visible, mpv playing, for 30 s: %.2f %% of a core; at most %g %%: %s\n", percent,
              kAtMost, verdict(percent <= kAtMost));
}

void measureHidden(const Desktop& desktop) {
  FakeMprisPlayer player(desktop.bus.address(), "quiet");
  player.show("A Title", "Playing");
  auto corvella = Watched::corvella(desktop, "quiet");
  corvella.microsecondsToFirstPaint();
  const SingleInstance user(
      QDBusConnection::connectToBus(QString::fromStdString(desktop.bus.address()), "user"));
  if (!user.tellFirst("Toggle")) throw std::runtime_error("no toggle");
  std::this_thread::sleep_for(seconds(2));
  const auto before = sleeps(corvella.id());
  const auto time = processorSeconds(corvella.id());
  player.forgetCalls();
  std::this_thread::sleep_for(seconds(15));
  const auto wakeUps = sleeps(corvella.id()) - before;
  const auto used = processorSeconds(corvella.id()) - time;
  std::printf(
      "hidden for 15 s: %.0f wake-ups of all threads, %zu calls to the player, %.1f ms of "
      "processor time; at most 0, 0: %s\n",
      wakeUps, player.calls().size(), used * 1000, verdict(wakeUps <= 0 && player.calls().empty()));
}

void measureStalls(const Desktop& desktop) {
  constexpr int kSeconds = 8;
  constexpr double kAtMost = 50;
  FakeMprisPlayer player(desktop.bus.address(), "hanging");
  player.show("A Title", "Playing");
  auto corvella = Watched::corvella(desktop, "hanging", kSeconds);
  corvella.microsecondsToFirstPaint();
  player.behave({.hangs = true});
  const auto longest = corvella.longestStallInMicroseconds() / 1000;
  const auto empty = Watched::emptyWindow(desktop, kSeconds).longestStallInMicroseconds() / 1000;
  std::printf(
      "longest stall in %d s with a hung player and keys pressed: %.1f ms; an empty "
      "window's: %.1f ms; at most %g ms: %s\n",
      kSeconds, longest, empty, kAtMost, verdict(longest <= kAtMost));
}

/// How long it takes from a player's signal until the panel shows the other title, beside a program
/// that only prints it.
void measureNews(const Desktop& desktop) {
  constexpr int kChanges = 40;
  constexpr double kAtMost = 8;
  FakeMprisPlayer player(desktop.bus.address(), "news");
  player.show("Title 0", "Playing");
  player.set("CanPlay", FakeMprisPlayer::Value::of("b", 1));  // Without it playerctl tells nothing.
  auto corvella = Watched::corvella(desktop, "news", 0, "titles");
  Process playerctl({"playerctl", "--player=news", "metadata", "--follow", "--format={{title}}"},
                    desktop.environment());
  std::vector<double> painted;
  std::vector<double> printed;
  const auto await = [&](const std::string& title) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const auto since = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    double ofCorvella = 0;
    double ofPlayerctl = 0;
    while (ofCorvella == 0 || ofPlayerctl == 0) {
      if (ofCorvella == 0 && corvella.wrote(title + "\n")) ofCorvella = since() * 1e6;
      if (ofPlayerctl == 0 && playerctl.output().ends_with(title + "\n")) {
        ofPlayerctl = since() * 1e6;
      }
      std::this_thread::sleep_for(std::chrono::microseconds(200));
      if (since() > 60) throw std::runtime_error("nobody sees " + title);
    }
    painted.push_back(ofCorvella);
    printed.push_back(ofPlayerctl);
  };
  await("Title 0");
  painted.clear();
  printed.clear();
  for (int i = 1; i <= kChanges; ++i) {
    // Another page is not turned earlier than a quarter of a second after the last.
    std::this_thread::sleep_for(std::chrono::milliseconds(800 + 37 * i % 200));
    const auto title = "Title " + std::to_string(i);
    player.show(title, "Playing");
    player.announce("Metadata");
    await(title);
  }
  printRatio("a change in the player until it is painted / until playerctl prints it",
             ratioOf(painted, printed), kAtMost);
}

double microsecondsOf(const std::vector<std::string>& command, const Desktop& desktop) {
  const auto start = std::chrono::steady_clock::now();
  Process process(command, desktop.environment());
  if (process.wait() != 0) throw std::runtime_error(command[0] + " fails: " + process.errors());
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
      .count();
}

void measurePrint(const Desktop& desktop) {
  constexpr int kPairs = 60;
  FakeMprisPlayer player(desktop.bus.address(), "printed");
  player.show("A Title", "Playing");
  player.set("CanPlay", FakeMprisPlayer::Value::of("b", 1));
  std::vector<double> corvella;
  std::vector<double> playerctl;
  for (int i = 0; i < kPairs; ++i) {
    playerctl.push_back(microsecondsOf({"playerctl", "metadata"}, desktop));
    corvella.push_back(microsecondsOf({besideThisProgram("corvella"), "--print"}, desktop));
  }
  printRatio("corvella --print / playerctl metadata", ratioOf(corvella, playerctl), 3);
}

struct LongLyrics {
  std::string name;
  std::string part;  // Repeated until there is 1 MiB of it.
};

std::string mebibyteOf(const std::string& part) {
  constexpr std::size_t kMebibyte = 1 << 20;
  std::string text;
  while (text.size() < kMebibyte) text += part;
  return text;
}

void measureUnfolding(const Desktop& desktop, const LongLyrics& lyrics) {
  constexpr int kSeconds = 6;
  constexpr double kAtMost = 50;
  FakeMprisPlayer player(desktop.bus.address(), "wordy");
  player.show("A Title", "Playing");
  player.setMetadata({{"xesam:title", "A Title"},
                      {"mpris:length", INT64_C(215'500'000)},
                      {"xesam:asText", mebibyteOf(lyrics.part)}});
  auto corvella = Watched::corvella(desktop, "wordy", kSeconds, "lyrics");
  const auto longest = corvella.longestStallInMicroseconds() / 1000;
  std::printf(
      "longest stall in %d s while 1 MiB of lyrics unfolds and is paged through, %s: %.1f ms; "
      "at most %g ms: %s\n",
      kSeconds, lyrics.name.c_str(), longest, kAtMost, verdict(longest <= kAtMost));
}

void measureAllUnfolding(const Desktop& desktop) {
  const std::vector<LongLyrics> all{{"line ends", "\n"},
                                    {"one word", "x"},
                                    {"ordinary lines", "the river says nothing\n"},
                                    {"lines of emoji", "\U0001f389\U0001f389\U0001f389\n"},
                                    {"one line of emoji", "\U0001f389"},
                                    {"Arabic", "قمر على الشرفة يسقي الياسمين\n"},
                                    {"a script for each letter", "aж\u05d0"}};
  for (const auto& lyrics : all) measureUnfolding(desktop, lyrics);
}

void measureEmbeddedStart(const Desktop& desktop) {
  measureStart(desktop, "embedded", "the embedded player", 1.5);
}

void measureWithMpv(const Desktop& desktop) {
  const TemporaryFolder folder;
  const RealMpv mpv(
      desktop.bus.address(),
      {.files = {makeLongTrack(folder, "usual.flac", CORVELLA_RESOURCES "/covers/harbour.png")}});
  measureStart(desktop, "auto", "mpv", 1.6);
  measurePlaying(desktop);
}

void measureMemoryWithMpv(const Desktop& desktop) {
  const TemporaryFolder folder;
  const RealMpv mpv(desktop.bus.address(),
                    {.files = {makeLongTrack(folder, "large.flac", makeCover(folder))}});
  measureMemory(desktop);
}

struct Measurement {
  std::string name;
  void (*measure)(const Desktop& desktop);
};

/// Measures all, or those that are named.
void measure(const std::vector<std::string>& names) {
  const std::vector<Measurement> all{
      {"start", measureEmbeddedStart}, {"hidden", measureHidden},
      {"stalls", measureStalls},       {"news", measureNews},
      {"print", measurePrint},         {"unfolding", measureAllUnfolding},
      {"mpv", measureWithMpv},         {"memory", measureMemoryWithMpv}};
  for (const auto& [name, measure] : all) {
    if (!names.empty() && std::ranges::find(names, name) == names.end()) continue;
    measure(Desktop());
  }
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  try {
    Corvella::measure({argv + 1, argv + argc});
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_host: %s\n", error.what());
    return 1;
  }
}
