#pragma once

#include <QTimer>
#include <memory>
#include <optional>
#include <string>

#include "host/TodayView.h"
#include "host/Tray.h"
#include "host/WidgetBridge.h"

namespace Corvella {

/// The Today view on a desktop, with an icon in its tray where it has one, until the user ends it.
/// GUI thread.
class OnDesktop {
 public:
  /// `bridge` is that of the view. Both outlive this object.
  OnDesktop(TodayView& view, WidgetBridge& bridge);

  /// Opens the view and returns the exit status. Throws `std::runtime_error` when the widget does
  /// not start.
  int run();

 private:
  void setUpAftermath();
  void lookForTray();

  TodayView& view_;
  std::optional<std::string> failure_;
  std::unique_ptr<Tray> tray_;
  QTimer lookForTray_;  // With it end all connections to this object.
  QTimer allIsShown_;
};

}  // namespace Corvella
