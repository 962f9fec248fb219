#pragma once

#include <functional>

#include "platform/notification_center/NCUpdateResult.h"

/// A widget, as its host sees it. Lives on the main queue.
class NCWidgetProviding {
 public:
  using CompletionHandler = std::function<void(NCUpdateResult)>;

  virtual ~NCWidgetProviding() = default;

  /// Asks the widget to bring itself up to date and to say so through the handler, once or more
  /// often. Null takes the earlier handler away.
  virtual void widgetPerformUpdateWithCompletionHandler(CompletionHandler completionHandler) = 0;
};
