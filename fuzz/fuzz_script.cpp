// Scripts of any text: whatever stands in one, the runner answers with a result or with an error of
// the right number, and asks the player only for commands that it could read.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "fuzz/Check.h"
#include "platform/foundation/NSPropertyList.h"
#include "players/PlayerScriptRunner.h"
#include "players/ScriptCommand.h"
#include "players/ScriptingTargets.h"
#include "tests/support/FakeMusicPlayer.h"

namespace Corvella {
namespace {

using Parsed = std::variant<ScriptCommand, ScriptTextError>;

ScriptingTargets everything() {
  NSPropertyList::Array groups;
  groups.emplace_back(std::string("com.apple.iTunes.playback"));
  groups.emplace_back(std::string("com.apple.iTunes.library.read-write"));
  NSPropertyList::Dictionary targets;
  targets.emplace("com.apple.iTunes", NSPropertyList(std::move(groups)));
  NSPropertyList::Dictionary entitlements;
  entitlements.emplace("com.apple.security.scripting-targets", NSPropertyList(std::move(targets)));
  return ScriptingTargets::fromEntitlements(NSPropertyList(std::move(entitlements)));
}

/// The error number that running the text has to end with; 0 for success.
int expectedNumber(const Parsed& parsed) {
  if (const auto* error = std::get_if<ScriptTextError>(&parsed)) {
    if (error->kind == ScriptTextError::Kind::Syntax) return -2741;
    return error->application == "iTunes" ? -1708 : -1743;
  }
  const auto& command = std::get<ScriptCommand>(parsed);
  if (command.application != "iTunes") return -1743;
  return command.verb == ScriptVerb::GetRating ? -1728 : 0;
}

void checkScript(const std::string& source) {
  // A copy without anything behind it, so that a read too far is found.
  const std::vector<char> exact(source.begin(), source.end());
  const auto parsed = parseScript(std::string_view(exact.data(), exact.size()));
  check(parsed.index() == parseScript(source + " ").index(), "a blank at the end changes nothing");

  FakeMusicPlayer player;
  PlayerScriptRunner runner(player, everything());
  const auto [result, error] = runner.initWithSource(source)->executeAndReturnError();
  check(result.has_value() != error.has_value(), "a result or an error, and not both");
  check((error ? error->number : 0) == expectedNumber(parsed), "the number tells what went wrong");
  check(!error || error->description().find('\n') == std::string::npos, "one line");
  check(player.track.rating >= 0 && player.track.rating <= 100, "a rating on the scale");
  check(player.volume >= 0 && player.volume <= 100, "a volume on the scale");
}

}  // namespace
}  // namespace Corvella

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  Corvella::checkScript(text);
  Corvella::checkScript("tell app \"iTunes\" to " + text);
  return 0;
}
