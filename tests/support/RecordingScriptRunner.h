#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/NSAppleScript.h"
#include "scripting/ScriptRunner.h"

/// A script runner that writes down every text it is given and answers as it was told to; texts
/// that it knows nothing about answer with nothing at all. Runs scripts on any thread.
class RecordingScriptRunner final : public Corvella::ScriptRunner {
 public:
  /// What `script` (the text after `tell app "iTunes" to `) answers from now on.
  void answer(const std::string& script, NSAppleScriptExecution execution) {
    answers_[script] = std::move(execution);
  }
  void answer(const std::string& script, const NSAppleEventDescriptor& result) {
    answer(script, {.result = result, .error = std::nullopt});
  }
  void answerText(const std::string& script, const std::string& text) {
    answer(script, NSAppleEventDescriptor::descriptorWithString(text));
  }
  void fail(const std::string& script) { answer(script, {.result = {}, .error = failure()}); }
  static NSAppleScriptErrorInformation failure() {
    return {.number = -1728, .message = {}, .briefMessage = {}, .appName = {}};
  }

  /// The texts of all scripts that have been asked for, made or not, oldest first.
  std::vector<std::string> scripts() const {
    const std::lock_guard lock(mutex_);
    return scripts_;
  }

  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override {
    const std::lock_guard lock(mutex_);
    scripts_.push_back(source);
    if (refuses) return nullptr;
    return std::make_unique<Script>([this, command = source.substr(opening_.size())] {
      observer(command);
      const auto answer = answers_.find(command);
      return answer == answers_.end() ? NSAppleScriptExecution() : answer->second;
    });
  }

  /// Is told the text of each script, without its opening, before the script is answered.
  std::function<void(const std::string&)> observer = [](const std::string&) {};
  /// Whether script objects cannot be made any more.
  bool refuses = false;

 private:
  struct Script final : NSAppleScript {
    explicit Script(std::function<NSAppleScriptExecution()> work) : run(std::move(work)) {}
    NSAppleScriptExecution executeAndReturnError() override { return run(); }

    std::function<NSAppleScriptExecution()> run;
  };

  const std::string opening_ = "tell app \"iTunes\" to ";
  mutable std::mutex mutex_;
  std::vector<std::string> scripts_;
  std::map<std::string, NSAppleScriptExecution> answers_;
};
