#pragma once

#include <string>

#include "model/SongController.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSPropertyList.h"
#include "players/PlayerScriptRunner.h"
#include "players/ScriptingTargets.h"
#include "tests/support/FakeImageDecoder.h"

namespace Corvella {

/// What Corvella ships as its entitlements.
inline ScriptingTargets shippedTargets() {
  constexpr auto name = "Corvella.entitlements";
  const auto bytes = NSBundle(CORVELLA_RESOURCES).dataForResource(name);
  return ScriptingTargets::fromEntitlements(
      NSPropertyList::propertyListWithData(bytes.value(), name));
}

/// Everything between the song model and a player, put together as the program does it.
struct ScriptedStack {
  explicit ScriptedStack(MusicPlayer& player) : runner(player, shippedTargets()) {}

  /// The error number that a command ends with; 0 when it succeeds.
  int errorNumber(const std::string& command) {
    const auto execution = runner.run("tell app \"iTunes\" to " + command);
    return execution.error ? execution.error->number : 0;
  }

  PlayerScriptRunner runner;
  NSBundle bundle{CORVELLA_RESOURCES};
  FakeImageDecoder decoder;
  SongController controller{runner, bundle, decoder};
};

}  // namespace Corvella
