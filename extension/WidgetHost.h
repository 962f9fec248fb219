#pragma once

#include <cstdint>
#include <string>

#include "extension/WidgetSnapshot.h"

namespace Corvella {

/// Is told what the widget does. Every call comes on the widget's thread and must not block it.
class WidgetHost {
 public:
  virtual ~WidgetHost() = default;

  /// Something on the widget's display has changed; at most once per turn of its run loop.
  virtual void displayChanged(WidgetSnapshot snapshot) = 0;

  /// The widget has dealt with all that came before the newest `ExtensionThread::ping`, whose
  /// number this is, and has shown what came of it.
  virtual void answered(std::uint64_t /*number*/) {}

  /// The widget has dealt with all that came before the newest `ExtensionThread::settle`, whose
  /// number this is, and nothing of it is under way any more; what came of it has been shown.
  virtual void settled(std::uint64_t /*number*/) {}

  /// The widget could not be started, with the reason; nothing else comes.
  virtual void startFailed(const std::string& reason) = 0;
};

}  // namespace Corvella
