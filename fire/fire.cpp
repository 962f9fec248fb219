// Puts Corvella under fire: the real program on a display and a session bus of its own, beside
// players that do all that no player should, under the hands of a user who does what comes to mind.
// What must hold all the time is watched, and its violation ends the run. Arguments: the seconds,
// the seed (chosen by chance without one), and --bus-ends to have the bus end and come back now and
// then.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "fire/Agreement.h"
#include "fire/Bombs.h"
#include "fire/Channel.h"
#include "fire/Desktop.h"
#include "fire/Figures.h"
#include "fire/HostileValues.h"
#include "fire/User.h"
#include "fire/WebServer.h"

namespace Corvella {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

/// Sanitizers slow the program down many times, and keep memory that has been freed. The bounds on
/// time are wider then, and those on stalls and memory are not held.
constexpr int kSlowness = kIsSanitized ? 10 : 1;
constexpr std::chrono::microseconds kLongestStall = 50ms;
constexpr auto kUntilAgreed = 2s * kSlowness;
constexpr auto kUntilAgreedOnNewBus = 5s * kSlowness;
constexpr auto kUntilSaid = 20s * kSlowness;
constexpr auto kUntilEnded = 1s * kSlowness;
constexpr auto kUntilAnswered = 5s * kSlowness;
constexpr auto kUntilFiguresAreBack = 20s * kSlowness;
/// What the program may have more than at its start under fire, and after it.
constexpr Figures kUnderFire{.threads = 48, .descriptors = 64, .megabytes = 768};
constexpr Figures kAfterwards{.threads = 4, .descriptors = 8, .megabytes = 32};

volatile std::sig_atomic_t interrupted = 0;

std::string besideThisProgram(const std::string& name) {
  return std::filesystem::canonical("/proc/self/exe").parent_path() / name;
}

struct Options {
  int seconds = 60;
  unsigned seed = 0;
  bool busEnds = false;
};

/// A program with a channel to it.
class Companion {
 public:
  Companion(std::vector<std::string> command, const std::vector<std::string>& environment)
      : Companion(Channel::makePair(), std::move(command), environment) {}

  /// Sends a message and awaits the answer.
  Fields ask(const std::string& message) {
    channel_.send(message);
    const auto answer = channel_.receive(kUntilAnswered);
    if (!answer) {
      const bool runs = process_.running();
      throw std::runtime_error(name_ + (runs ? " does not answer" : " has ended"));
    }
    return readFields(*answer);
  }
  Process& process() { return process_; }

 private:
  Companion(std::pair<Channel, Channel> ends, std::vector<std::string> command,
            const std::vector<std::string>& environment)
      : name_(command.front()),
        channel_(std::move(ends.first)),
        process_(with(std::move(command), ends.second.descriptor()), environment) {}

  /// The descriptor of its end is the first argument of the program.
  static std::vector<std::string> with(std::vector<std::string> command, int descriptor) {
    command.front() = besideThisProgram(command.front());
    command.insert(command.begin() + 1, std::to_string(descriptor));
    return command;
  }

  const std::string name_;
  const Channel channel_;
  Process process_;
};

const TemporaryFolder& withHostileFiles(const TemporaryFolder& folder) {
  makeHostileFiles(folder.path());
  return folder;
}

class Run {
 public:
  explicit Run(const Options& options) : options_(options) {}

  void run() {
    agree("auto", kUntilAgreed + 5s);
    rest(3s);
    const auto end = Clock::now() + std::chrono::seconds(options_.seconds);
    start_ = most_ = Figures::of(corvella_.process().id());
    for (int round = 1; Clock::now() < end; ++round) {
      fire(std::min(Clock::now() + std::chrono::seconds(dice_.between(7, 12)), end));
      comeToRest();
      if (options_.busEnds && round % 3 == 0) endBus();
    }
    awaitFigures();
    const auto soon = Clock::now() + 2s;
    fire(soon);
    endCorvella();
  }

  void printFigures() {
    const std::chrono::duration<double> time = Clock::now() - began_;
    std::printf("seed %u, %.0f s; %d times the panel agreed after at most %lld ms\n", options_.seed,
                time.count(), agreements_, static_cast<long long>(longestAgreement_.count()));
    std::printf("the crowd had said all that it had begun to say after at most %lld ms of rest\n",
                static_cast<long long>(longestToSay_.count()));
    std::printf("the user:");
    for (const auto& [kind, count] : user_.counts()) std::printf(" %s %d", kind.c_str(), count);
    std::printf("\nthe crowd:");
    for (const auto& [kind, count] : crowdCounts()) std::printf(" %s %d", kind.c_str(), count);
    std::printf("\nthe web server: requests %d\n", server_.requests());
    std::printf(
        "longest stall of the window: %.1f ms, of %.1f ms with what the machine held up; at "
        "most %lld ms%s\n",
        stall_ / 1000, wholeStall_ / 1000, static_cast<long long>(kLongestStall / 1ms),
        kIsSanitized ? " without sanitizers" : "");
    const auto print = [](const char* what, double start, double most, double end) {
      std::printf("%s: %.0f at the start, %.0f at most, %.0f at the end\n", what, start, most, end);
    };
    print("threads", start_.threads, most_.threads, end_.threads);
    print("descriptors", start_.descriptors, most_.descriptors, end_.descriptors);
    print("MB that no file stands behind", start_.megabytes, most_.megabytes, end_.megabytes);
    if (ended_)
      std::printf("end after SIGTERM: %lld ms\n", static_cast<long long>(ended_->count()));
  }

  void printLastWords() {
    std::printf("the user's last actions, oldest first:\n");
    for (const auto& action : user_.last()) std::printf("  %s\n", action.c_str());
    std::printf("the crowd's:\n%s", lastLines(crowd_.process().output(), 40).c_str());
    std::printf("the crowd's errors:\n%s", lastLines(crowd_.process().errors(), 10).c_str());
    std::printf("Corvella's errors:\n%s", lastLines(corvella_.process().errors(), 120).c_str());
    if (!stack_.empty()) std::printf("in the longest stall: %s\n", stack_.c_str());
  }

 private:
  static std::string lastLines(const std::string& text, int count) {
    auto start = text.size();
    while (count-- > 0 && start != std::string::npos && start > 0)
      start = text.rfind('\n', start - 1);
    return start == std::string::npos ? text : text.substr(std::min(start, text.size()));
  }

  /// By kind, the second word of each line.
  std::map<std::string, int> crowdCounts() {
    std::map<std::string, int> counts;
    std::istringstream lines(crowd_.process().output());
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      std::string kind;
      words >> kind >> kind;
      if (kind.ends_with(':')) ++counts[kind.substr(0, kind.size() - 1)];
    }
    return counts;
  }

  /// What the window shows, once it has been seen that all that must hold does.
  Fields look() {
    if (interrupted != 0) throw std::runtime_error("interrupted");
    const auto panel = corvella_.ask("look");
    stall_ = std::stod(panel.at("stall"));
    wholeStall_ = std::stod(panel.at("whole stall"));
    stack_ = panel.at("stack");
    if (!kIsSanitized && stall_ / 1000 > kLongestStall / 1ms) {
      throw std::runtime_error("the window stalls for " + std::to_string(stall_ / 1000) + " ms");
    }
    if (Clock::now() >= nextFigures_) lookAtFigures();
    return panel;
  }

  void lookAtFigures() {
    nextFigures_ = Clock::now() + 500ms;
    end_ = Figures::of(corvella_.process().id());
    most_ = Figures::most(most_, end_);
    if (start_.threads == 0) return;
    hold(end_.beyond(start_ + bounds(kUnderFire)));
  }

  static Figures bounds(const Figures& more) {
    return more + Figures{.megabytes = kIsSanitized ? 1e6 : 0};
  }

  static void hold(const std::string& violation) {
    if (!violation.empty()) throw std::runtime_error("Corvella has " + violation);
  }

  void rest(std::chrono::seconds time) {
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
      look();
      std::this_thread::sleep_for(50ms);
    }
  }

  void fire(Clock::time_point end) {
    crowd_.ask("fire");
    while (Clock::now() < end) {
      const auto panel = look();
      if (panel.contains("player")) crowd_.ask(panel.at("player"));
      user_.act(panel);
      std::this_thread::sleep_for(std::chrono::milliseconds(dice_.between(0, 80)));
    }
  }

  /// The crowd and the user come to rest. Half of the time the user leaves the panel with the
  /// player that it shows, so that nothing that it should have forgotten is forgotten for another
  /// reason.
  void comeToRest() {
    const auto players = rested();
    constexpr std::array kChoices{"", "", "", "auto", "auto", "fire3"};
    std::string choice = dice_.of(kChoices);
    if (!choice.empty() && choice != "auto" && !players.contains(choice + " identity"))
      choice = "auto";
    user_.comeToRest(choice);
    agree(choice, kUntilAgreed);
  }

  /// The players once they rest. They do not as long as something that they said before is still on
  /// its way to the bus, in front of the truth: 64 MiB are thousands of writes.
  Fields rested() {
    const auto start = Clock::now();
    auto players = crowd_.ask("rest");
    while (players.at("unsent") != "0") {
      if (Clock::now() - start > kUntilSaid) throw std::runtime_error("the crowd cannot rest");
      look();
      std::this_thread::sleep_for(20ms);
      players = crowd_.ask("state");
    }
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    longestToSay_ = std::max(longestToSay_, time);
    return players;
  }

  void agree(const std::string& choice, std::chrono::milliseconds atMost) {
    const auto start = Clock::now();
    while (true) {
      const auto lie = disagreement(look(), crowd_.ask("state"), choice);
      const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
      if (lie.empty()) {
        ++agreements_;
        longestAgreement_ = std::max(longestAgreement_, time);
        return;
      }
      if (time > atMost) {
        throw std::runtime_error("after " + std::to_string(time.count()) +
                                 " ms of rest the panel " + lie);
      }
      std::this_thread::sleep_for(20ms);
    }
  }

  void endBus() {
    desktop_.endBus();
    rest(1s);
    desktop_.startBus();
    crowd_.ask("come back");
    const auto back = Clock::now();
    agree("", kUntilAgreedOnNewBus);
    // Until then another Corvella that is started takes itself for the only one.
    while (Clock::now() < back + kUntilAgreedOnNewBus) rest(1s);
  }

  void awaitFigures() {
    const auto end = Clock::now() + kUntilFiguresAreBack;
    while (true) {
      rest(1s);
      const auto excess = end_.beyond(start_ + bounds(kAfterwards));
      if (excess.empty()) return;
      if (Clock::now() > end) return hold("after its rest " + excess);
    }
  }

  void endCorvella() {
    auto& process = corvella_.process();
    const auto start = Clock::now();
    process.kill(SIGTERM);
    while (process.running() && Clock::now() - start < 2 * kUntilEnded) {
      std::this_thread::sleep_for(1ms);
    }
    ended_ = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    if (*ended_ > kUntilEnded) {
      throw std::runtime_error("Corvella ends " + std::to_string(ended_->count()) +
                               " ms after SIGTERM, or later");
    }
    const auto status = process.wait();
    if (status != 0) throw std::runtime_error("Corvella ends with " + std::to_string(*status));
  }

  const Options options_;
  const Clock::time_point began_ = Clock::now();
  Dice dice_{options_.seed};
  FireDesktop desktop_;
  TemporaryFolder files_;
  WebServer server_{{{"/giant.png", giantPng()}, {"/scans.jpg", manyScansJpeg()}}};
  Companion crowd_{{"fire_crowd", desktop_.busAddress(), std::to_string(options_.seed + 1),
                    withHostileFiles(files_).path().string(), server_.address()},
                   desktop_.environment()};
  Companion corvella_{{"fire_corvella"}, desktop_.environment()};
  User user_{desktop_.environment(), besideThisProgram("corvella"), options_.seed + 2};
  double stall_ = 0;  // Microseconds, as the next.
  double wholeStall_ = 0;
  std::string stack_;
  Figures start_;
  Figures most_;
  Figures end_;
  Clock::time_point nextFigures_;
  int agreements_ = 0;
  std::chrono::milliseconds longestAgreement_{};
  std::chrono::milliseconds longestToSay_{};
  std::optional<std::chrono::milliseconds> ended_;
};

Options parse(const std::vector<std::string>& arguments) {
  Options options{.seed = std::random_device()() % 1'000'000};
  std::vector<unsigned> numbers;
  for (const auto& argument : arguments) {
    if (argument == "--bus-ends") {
      options.busEnds = true;
    } else {
      numbers.push_back(static_cast<unsigned>(std::stoul(argument)));
    }
  }
  if (!numbers.empty()) options.seconds = static_cast<int>(numbers[0]);
  if (numbers.size() > 1) options.seed = numbers[1];
  return options;
}

int run(const Options& options) {
  std::printf("seed %u\n", options.seed);
  std::fflush(stdout);
  Run run(options);
  try {
    run.run();
    run.printFigures();
    return 0;
  } catch (const std::exception& violation) {
    run.printLastWords();
    run.printFigures();
    std::printf("VIOLATED with seed %u: %s\n", options.seed, violation.what());
    return 1;
  }
}

}  // namespace
}  // namespace Corvella

int main(int argc, char** argv) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::signal(signal, [](int) { Corvella::interrupted = 1; });
  }
  try {
    return Corvella::run(Corvella::parse({argv + 1, argv + argc}));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fire: %s\n", error.what());
    return 2;
  }
}
