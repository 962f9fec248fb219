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
/// that it knows nothing about answer with nothing at all. Any thread.
class RecordingScriptRunner final : public Corvella::ScriptRunner {
 public:
  /// What `script` (the text after `tell app "iTunes" to `) answers from now on.
  void answer(const std::string& script, NSAppleScriptExecution execution) {
    const std::lock_guard lock(mutex_);
    answers_[opening() + script] = std::move(execution);
  }
  void answer(const std::string& script, const NSAppleEventDescriptor& result) {
    answer(script, {.result = result, .error = std::nullopt});
  }
  void answerText(const std::string& script, const std::string& text) {
    answer(script, NSAppleEventDescriptor::descriptorWithString(text));
  }
  void fail(const std::string& script, int number = -1728) {
    answer(script, {.result = std::nullopt, .error = errorInformation(number)});
  }
  static NSAppleScriptErrorInformation errorInformation(int number) {
    NSAppleScriptErrorInformation error;
    error.number = number;
    return error;
  }

  /// Is told the text of each script, without its opening, before the script is answered.
  void setObserver(std::function<void(const std::string&)> observer) {
    observer_ = std::move(observer);
  }

  /// No script object can be made any more.
  void refuseToMakeScripts() { refuses_ = true; }

  /// The texts of all scripts that have been asked for, made or not, oldest first.
  std::vector<std::string> scripts() const {
    const std::lock_guard lock(mutex_);
    return scripts_;
  }

  std::unique_ptr<NSAppleScript> initWithSource(std::string source) override {
    const std::lock_guard lock(mutex_);
    scripts_.push_back(source);
    if (refuses_) return nullptr;
    return std::make_unique<Script>(*this, std::move(source));
  }

 private:
  class Script final : public NSAppleScript {
   public:
    Script(RecordingScriptRunner& runner, std::string source)
        : runner_(runner), source_(std::move(source)) {}
    NSAppleScriptExecution executeAndReturnError() override { return runner_.run(source_); }

   private:
    RecordingScriptRunner& runner_;
    std::string source_;
  };

  static std::string opening() { return "tell app \"iTunes\" to "; }

  NSAppleScriptExecution run(const std::string& source) {
    if (observer_) observer_(source.substr(opening().size()));
    const std::lock_guard lock(mutex_);
    const auto found = answers_.find(source);
    return found == answers_.end() ? NSAppleScriptExecution() : found->second;
  }

  mutable std::mutex mutex_;
  std::vector<std::string> scripts_;
  std::map<std::string, NSAppleScriptExecution> answers_;
  std::function<void(const std::string&)> observer_;
  bool refuses_ = false;
};
