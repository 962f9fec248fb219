#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/foundation/NSAppleScript.h"
#include "players/MusicPlayer.h"
#include "players/PlayerNews.h"
#include "players/ScriptCommand.h"
#include "players/ScriptingTargets.h"
#include "scripting/ScriptRunner.h"

namespace Corvella {

/// A small interpreter: parses the scripts of this system, asks a `MusicPlayer` and answers with
/// descriptors, or with error information that carries the platform's numbers:
/// - -600: no player runs
/// - -1708: the command is not understood
/// - -1712: the player did not answer in time
/// - -1728: no current track, nothing of that name
/// - -1743: the entitlements do not grant it, judged before the command is
/// - -2741: syntax error
///
/// Keeps no state between scripts. Any thread; scripts run on their callers' threads and overlap.
class PlayerScriptRunner final : public ScriptRunner {
 public:
  /// Scripts may ask for what `targets` grants and for nothing else. `player` must outlive the
  /// runner, and so must `listener`, which is told whether the player obeys what scripts tell it;
  /// it may be null.
  PlayerScriptRunner(MusicPlayer& player, const ScriptingTargets& targets,
                     PlayerNewsListener* listener = nullptr);

  /// Never null: a malformed text fails when it is run.
  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override;

  /// Parses and runs one script.
  NSAppleScriptExecution run(std::string_view source);

 private:
  bool mayAddress(std::string_view application) const;
  bool isGranted(const ScriptCommand& command) const;
  NSAppleScriptExecution answer(const ScriptCommand& command);
  NSAppleScriptExecution obeyed(PlayerAnswer<Done> answer);

  MusicPlayer& player_;
  PlayerNewsListener* const listener_;
  bool mayAddress_;
  bool mayControlPlayback_;
  bool mayUseLibrary_;
};

}  // namespace Corvella
