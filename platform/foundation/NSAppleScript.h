#pragma once

#include <optional>
#include <string>

#include "platform/foundation/NSAppleEventDescriptor.h"

/// What the platform tells about a script that failed.
struct NSAppleScriptErrorInformation {
  int number = 0;            ///< The platform's error number, below zero.
  std::string message;       ///< The whole message.
  std::string briefMessage;  ///< The message without its surroundings.
  std::string appName;       ///< The application that refused; empty when none was reached.

  /// All of it as one line without a line feed: the keys in alphabetical order, texts quoted,
  /// control characters escaped.
  std::string description() const;
};

/// What a run of a script yields; any of the two may be absent, and both may be present.
struct NSAppleScriptExecution {
  std::optional<NSAppleEventDescriptor> result;
  std::optional<NSAppleScriptErrorInformation> error;
};

/// One script with its source. Made by a script service, run by whoever holds it.
class NSAppleScript {
 public:
  virtual ~NSAppleScript() = default;

  /// Compiles and runs the script on the calling thread; returns when it has ended.
  virtual NSAppleScriptExecution executeAndReturnError() = 0;
};
