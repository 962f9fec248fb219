#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <chrono>
#include <memory>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// Hands the signals that ask the program to end, SIGTERM, SIGINT and SIGHUP, to the event loop.
///
/// However the program is asked, it ends in time: when its own end takes too long, because the
/// display server or a file system does not answer, the process is ended with status 0. Nothing is
/// lost by that, as the program keeps nothing.
///
/// There is one object of this class at a time, on the thread of the event loop. With the object
/// the signals are left to the system again.
class TerminationSignals final : public QObject {
  Q_OBJECT

 public:
  /// The longest time that the end may take.
  static constexpr std::chrono::milliseconds kLongestEnd{900};

  /// Throws `std::system_error` when the kernel refuses.
  TerminationSignals();
  ~TerminationSignals() override;
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

  /// From now on `received` is emitted on this thread, which has an event loop. A signal that came
  /// before is not lost.
  void listen();

  /// Counts the time of the end from now on, which no signal has asked for.
  static void limitEnd();

 signals:
  void received();

 private:
  FileDescriptor event_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace Corvella
