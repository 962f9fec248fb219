#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "scripting/ScriptRunner.h"

namespace Corvella {

/// Makes its script runner when the first script comes, on the thread that the script comes on: to
/// reach a player takes a while.
///
/// Any thread.
class LateScriptRunner final : public ScriptRunner {
 public:
  using Make = std::function<std::unique_ptr<ScriptRunner>()>;
  using Failed = std::function<void(const std::string& reason)>;

  /// `make` may throw a `std::exception`; `failed` is then called with its message, once, on the
  /// thread of the script, and there are no scripts.
  LateScriptRunner(Make make, Failed failed);

  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override;

 private:
  void makeRunner();

  const Make make_;
  const Failed failed_;
  std::once_flag made_;
  std::unique_ptr<ScriptRunner> runner_;
};

}  // namespace Corvella
