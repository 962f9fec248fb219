#include "fire/StallWatch.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <cxxabi.h>
#include <execinfo.h>
#include <fcntl.h>

namespace Corvella {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

namespace {

constexpr auto kBetweenTurns = 2ms;
/// After so long without a turn, the other thread has the stack noted.
constexpr auto kLong = 30ms;

/// The stack that was noted last. A signal handler knows of nothing but globals.
std::array<void*, 64> noted;  // NOLINT(misc-use-anonymous-namespace)
std::atomic<int> notedFrames = 0;

nanoseconds now() {
  return std::chrono::steady_clock::now().time_since_epoch();
}

/// How long the thread has waited for a processor, from its file schedstat: the second number.
nanoseconds waitedFor(int schedule) {
  std::array<char, 100> text{};
  if (::pread(schedule, text.data(), text.size() - 1, 0) <= 0) return {};
  char* next = nullptr;
  std::strtoull(text.data(), &next, 10);
  return nanoseconds(std::strtoull(next, nullptr, 10));
}

/// The name of the function among what backtrace_symbols tells: "file(name+0x1) [address]".
std::string functionIn(std::string_view symbol) {
  const auto start = symbol.find('(') + 1;
  const auto end = symbol.find('+', start);
  if (end == std::string_view::npos || end == start) return std::string(symbol);
  const std::string mangled(symbol.substr(start, end - start));
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status), std::free);
  return name ? name.get() : mangled;
}

}  // namespace

StallWatch::StallWatch()
    : schedule_(::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC), "schedstat"),
      waited_(waitedFor(schedule_.number())),
      lastTurn_(now()) {
  ::backtrace(noted.data(), 1);  // Loads a library, which a signal handler must not do.
  struct sigaction action {};
  action.sa_handler = noteStack;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGPROF, &action, nullptr);
  turns_.setTimerType(Qt::PreciseTimer);
  turns_.callOnTimeout(this, [this] { turn(); });
  turns_.start(kBetweenTurns);
  outside_ = std::thread([this] { watchFromOutside(); });
}

StallWatch::~StallWatch() {
  ending_ = true;
  outside_.join();
}

void StallWatch::noteStack(int /*signal*/) {
  notedFrames = ::backtrace(noted.data(), static_cast<int>(noted.size()));
}

void StallWatch::turn() {
  const auto time = now();
  const auto waited = waitedFor(schedule_.number());
  const auto whole = time - lastTurn_.exchange(time);
  const auto excused = std::max(waited - waited_, lateness_.exchange(0ns));
  waited_ = waited;
  const auto own = std::chrono::duration_cast<std::chrono::microseconds>(whole - excused);
  if (own > longest_.own) {
    longest_ = {.own = own,
                .whole = std::chrono::duration_cast<std::chrono::microseconds>(whole),
                .stack = stackText()};
  }
  notedFrames = 0;
}

void StallWatch::watchFromOutside() {
  nanoseconds noticed{};  // The turn after which nothing happened when it was last looked.
  while (!ending_) {
    constexpr auto kSleep = 5ms;
    const auto start = now();
    std::this_thread::sleep_for(kSleep);
    const auto late = now() - start - kSleep;
    // Less than that is what any sleep takes longer.
    if (late > 1ms) lateness_ = lateness_.load() + late;
    const auto last = lastTurn_.load();
    if (now() - last < kLong || last == noticed) continue;
    noticed = last;
    ::pthread_kill(watched_, SIGPROF);
  }
}

std::string StallWatch::stackText() const {
  const int frames = notedFrames;
  if (frames == 0) return {};
  const std::unique_ptr<char*, decltype(&std::free)> symbols(
      ::backtrace_symbols(noted.data(), frames), std::free);
  std::string text;
  for (int i = 2; i < frames; ++i) text.append(functionIn(symbols.get()[i])).append(" < ");
  return text;
}

}  // namespace Corvella
