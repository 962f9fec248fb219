#include "fire/User.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/support/Process.h"

namespace Corvella {

using namespace std::chrono_literals;

namespace {

constexpr int kScreenWidth = 1280;
constexpr int kScreenHeight = 800;
constexpr int kHeading = 44;  // With the cross at its right end.
constexpr int kCrossRoom = 60;
constexpr std::size_t kMostRemembered = 20;

int number(const Fields& fields, const char* name) {
  const auto found = fields.find(name);
  return found != fields.end() ? std::stoi(found->second) : 0;
}

/// False when the program does not end in time.
bool endsInTime(Process& process) {
  constexpr auto kLongest = 20s;
  const auto end = std::chrono::steady_clock::now() + kLongest;
  while (process.running()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(1ms);
  }
  return true;
}

}  // namespace

User::User(std::vector<std::string> environment, std::string program, std::uint64_t seed)
    : environment_(std::move(environment)), program_(std::move(program)), dice_(seed) {}

void User::note(const std::string& kind, const std::string& what) {
  ++counts_[kind];
  last_.push_back(kind + " " + what);
  if (last_.size() > kMostRemembered) last_.pop_front();
}

void User::xdotool(const std::vector<std::string>& arguments) {
  auto command = arguments;
  command.insert(command.begin(), "xdotool");
  Process process(command, environment_);
  if (!endsInTime(process)) throw std::runtime_error("the display server does not answer");
}

void User::startAgain(const std::vector<std::string>& arguments) {
  auto command = arguments;
  command.insert(command.begin(), program_);
  Process process(command, environment_);
  // The one that runs may be busy, and then the one that was started says so. But one that goes on
  // running has not found it.
  if (!endsInTime(process)) throw std::runtime_error("a second Corvella does not find the first");
}

User::Point User::pointOf(const Fields& panel) {
  const int x = number(panel, "x");
  const int y = number(panel, "y");
  const int left = dice_.between(0, std::max(number(panel, "width") - 1, 0));
  const int top = dice_.between(0, std::max(number(panel, "height") - 1, 0));
  const Point point{.x = std::clamp(x + left, 0, kScreenWidth - 1),
                    .y = std::clamp(y + top, 0, kScreenHeight - 1)};
  // The panel may have been dragged so far that only its heading is on the screen.
  const bool onCross = point.y - y < kHeading && point.x - x >= number(panel, "width") - kCrossRoom;
  return onCross ? Point{.x = std::max(x, 0), .y = point.y} : point;
}

void User::act(const Fields& panel) {
  if (number(panel, "visible") == 0 && dice_.once(2)) {
    note("opens", "the panel");
    return startAgain({});
  }
  const auto from = pointOf(panel);
  const auto to = pointOf(panel);
  const auto text = [](int value) { return std::to_string(value); };
  const std::vector<std::string> there{"mousemove", text(from.x), text(from.y)};
  const auto at = text(from.x) + "," + text(from.y);
  const auto and_ = [&](std::vector<std::string> more) {
    more.insert(more.begin(), there.begin(), there.end());
    xdotool(more);
  };
  constexpr std::array kButtons{"1", "1", "1", "1", "2", "3"};
  constexpr std::array kKeys{"space",     "p",       "n", "0",      "1",    "2",
                             "3",         "4",       "5", "Up",     "Down", "l",
                             "Page_Down", "Page_Up", "s", "Escape", "Left", "Right"};
  switch (dice_.below(16)) {
    case 0:
    case 1:
    case 2:
    case 3: {
      const auto* const button = dice_.of(kButtons);
      note("clicks", at + " with button " + button);
      return and_({"click", "--repeat", text(dice_.between(1, 3)), "--delay", "5", button});
    }
    case 4:
    case 5: {
      const auto* const wheel = dice_.once(2) ? "4" : "5";
      note("wheels", at);
      return and_({"click", "--repeat", text(dice_.between(1, 10)), "--delay", "2", wheel});
    }
    case 6:
    case 7: {
      note("drags", at + " to " + text(to.x) + "," + text(to.y));
      const auto middle = std::vector{text((from.x + to.x) / 2), text((from.y + to.y) / 2)};
      return and_({"mousedown", "1", "mousemove", middle[0], middle[1], "mousemove", text(to.x),
                   text(to.y), "mouseup", "1"});
    }
    case 8:
      note("toggles", "the panel");
      return startAgain({"--toggle"});
    case 9: {
      constexpr std::array kPlayers{"auto", "auto", "fire0", "fire1", "fire2", "nobody"};
      const std::string player = dice_.of(kPlayers);
      note("chooses", player);
      return startAgain({"--player=" + player});
    }
    case 10:
      note("opens", "the panel");
      return startAgain({});
    case 11: {
      note("picks", "from the menu of players");
      return xdotool({"key", "--delay", "10", "s", "Down", "Down", "Return"});
    }
    default: {
      const auto* const key = dice_.of(kKeys);
      note("presses", key);
      return xdotool({"key", "--repeat", text(dice_.between(1, 4)), "--delay", "5", key});
    }
  }
}

void User::comeToRest(const std::string& player) {
  note("rests", player);
  // Escape closes a menu that is open, and else hides the panel, which is opened again.
  xdotool({"mouseup", "1", "mouseup", "2", "mouseup", "3", "key", "Escape"});
  startAgain(player.empty() ? std::vector<std::string>() : std::vector{"--player=" + player});
}

}  // namespace Corvella
