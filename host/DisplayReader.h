#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "host/ExtensionThread.h"
#include "host/WidgetDisplay.h"
#include "host/WidgetHost.h"

namespace Corvella {

/// Opens the widget once, without a window, and waits until it shows what plays.
class DisplayReader final : private WidgetHost {
 public:
  explicit DisplayReader(const HostServices& services) : services_(services) {}

  /// The display once the first refresh is shown, or at once when no player runs; with `unfolded`,
  /// once the lyrics are shown, too, if there are any. Blocks. Throws `std::runtime_error` when the
  /// widget does not start or does not get so far in half a minute.
  WidgetDisplay read(bool unfolded);

 private:
  void displayChanged(WidgetSnapshot snapshot) override;
  void updateReported(NCUpdateResult result) override;
  void startFailed(const std::string& reason) override;

  void waitFor(const std::function<bool()>& condition);
  void unfold(ExtensionThread& extension);
  bool toggleReads(const std::string& title) const;

  const HostServices services_;
  std::mutex mutex_;
  std::condition_variable changed_;
  WidgetDisplay display_;
  std::optional<NCUpdateResult> report_;
  int reports_ = 0;
  std::optional<std::string> failure_;
};

}  // namespace Corvella
