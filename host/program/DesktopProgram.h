#pragma once

#include <QTimer>
#include <memory>
#include <optional>
#include <string>

#include "host/panel/TodayView.h"
#include "host/panel/Tray.h"
#include "host/program/SingleInstance.h"
#include "host/program/TerminationSignals.h"

namespace Corvella {

/// The program on a desktop, from the opening of the Today view to its end: what later instances,
/// the tray and signals ask for is done to the view. GUI thread.
class DesktopProgram {
 public:
  /// All three outlive this object.
  DesktopProgram(TodayView& view, SingleInstance& instance, TerminationSignals& termination);

  /// Opens the view, unless it is to stay hidden for now, and returns the exit status once the
  /// user, or a signal, has ended the program. Throws `std::runtime_error` when the widget does not
  /// start.
  int run(bool hidden);

 private:
  void lookForTray();
  void showTray();

  TodayView& view_;
  std::optional<std::string> failure_;
  std::unique_ptr<Tray> tray_;
  QTimer lookForTray_;  // Connections that use this object are bound to the timer and end with it.
};

}  // namespace Corvella
