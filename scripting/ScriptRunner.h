#pragma once

#include <memory>
#include <string>

#include "platform/foundation/NSAppleScript.h"

namespace Corvella {

/// The script service: whoever answers the texts that `AppleScriptController` sends.
///
/// Any thread; scripts from several threads may run at the same time.
class ScriptRunner {
 public:
  virtual ~ScriptRunner() = default;

  /// Makes a script object of a source text; null when none can be made. The script must not
  /// outlive the runner.
  virtual std::unique_ptr<NSAppleScript> initWithSource(std::string source) = 0;
};

}  // namespace Corvella
