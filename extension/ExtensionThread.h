#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "extension/EndingScriptRunner.h"
#include "extension/WidgetHost.h"
#include "platform/appkit/NSFontFinder.h"
#include "platform/appkit/NSImageDecoder.h"
#include "platform/appkit/NSTextMeasurer.h"
#include "platform/dispatch/Clock.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/NSBundle.h"
#include "scripting/ScriptRunner.h"

namespace Corvella {

/// What the host brings to the widget besides its scripts. All of it outlives the extension's
/// thread.
struct HostServices {
  const Clock& clock;
  const NSBundle& bundle;
  const NSImageDecoder& imageDecoder;
  const NSFontFinder& fontFinder;
  const NSTextMeasurer& textMeasurer;
};

/// Runs the widget's extension on a thread and a run loop of its own, as if it were another
/// process: calls of the host and input of the user go in as messages, in order, and snapshots come
/// out. The widget's view is given the size that it prefers.
///
/// Any thread; nothing here blocks, but for the end.
class ExtensionThread {
 public:
  /// Starts the thread. `scriptRunner`, which runs the widget's scripts, and `host` outlive this
  /// object.
  ExtensionThread(const HostServices& services, ScriptRunner& scriptRunner, WidgetHost& host);
  /// Ends the thread as soon as the scripts that are running have returned; no other is started.
  ~ExtensionThread();
  ExtensionThread(const ExtensionThread&) = delete;
  ExtensionThread& operator=(const ExtensionThread&) = delete;

  /// The widget is about to be shown or hidden. What it shows of an appearance reaches the host
  /// when the widget has settled, or after a while (see `Curtain`).
  void appear();
  void disappear();

  /// Has the widget, which is shown, disappear and appear again in one step, so that it reads
  /// everything anew. It waits until the widget has settled: a refresh that is under way could
  /// otherwise show older values last. Pages that are asked for meanwhile are one.
  void turnPage();

  /// The user has clicked the button of that identifier. Each click counts.
  void click(const std::string& identifier);

  /// The user has moved the slider or the stars of that identifier. While the widget is busy only
  /// the newest value of each control waits.
  void setValue(const std::string& identifier, double value);

  /// Has `WidgetHost::answered` called once the widget has dealt with all that came before.
  void ping(std::uint64_t number);

  /// Has `WidgetHost::settled` called once the widget has dealt with all that came before and with
  /// all that this set off: when no block waits or runs on either of its queues.
  void settle(std::uint64_t number);

 private:
  class Extension;

  void run();
  void send(std::function<void(Extension&)> message);
  double takeValue(const std::string& identifier, const std::shared_ptr<double>& newest);

  const HostServices services_;
  WidgetHost& host_;
  EndingScriptRunner scriptRunner_;
  RunLoop runLoop_;
  std::unique_ptr<Extension> extension_;  // Lives on the thread.
  std::mutex mutex_;
  /// The newest value of each control that waits and that no other message has followed; guarded by
  /// the mutex.
  std::map<std::string, std::shared_ptr<double>> waitingValues_;
  std::thread thread_;
};

}  // namespace Corvella
