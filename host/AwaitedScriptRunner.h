#pragma once

#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>

#include "scripting/ScriptRunner.h"

namespace Corvella {

/// Makes its script runner on a thread of its own, since reaching a player takes a while; scripts
/// wait until it is made.
///
/// Any thread; scripts not on the GUI thread.
class AwaitedScriptRunner final : public ScriptRunner {
 public:
  using Make = std::function<std::unique_ptr<ScriptRunner>()>;
  using Failed = std::function<void(const std::string& reason)>;

  /// Starts at once. `make` may throw a `std::exception`; there are no scripts then, and the first
  /// one that is asked for calls `failed` with the reason, on the thread that asks.
  AwaitedScriptRunner(Make make, Failed failed);

  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override;

 private:
  // Its end waits until the runner is made.
  const std::shared_future<std::unique_ptr<ScriptRunner>> runner_;
  const Failed failed_;
  std::once_flag told_;
};

}  // namespace Corvella
