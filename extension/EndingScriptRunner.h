#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "scripting/ScriptRunner.h"

namespace Corvella {

/// Passes scripts on until `end` is called, and makes none from then on. Otherwise the end of the
/// widget would wait for a player whose answer nobody will see. Any thread.
class EndingScriptRunner final : public ScriptRunner {
 public:
  /// `runner` outlives this one.
  explicit EndingScriptRunner(ScriptRunner& runner) : runner_(runner) {}

  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override {
    return ending_ ? nullptr : runner_.initWithSource(std::move(source));
  }

  void end() { ending_ = true; }

 private:
  ScriptRunner& runner_;
  std::atomic<bool> ending_ = false;
};

}  // namespace Corvella
