#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <memory>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// Takes the signals that ask the program to end, SIGTERM, SIGINT and SIGHUP, out of the kernel's
/// hands and hands them to the event loop.
///
/// Made before any thread is started, so that none of them is interrupted. Together with this
/// object the signals end the program again, at once.
class TerminationSignals final : public QObject {
  Q_OBJECT

 public:
  /// Throws `std::system_error` when the kernel refuses.
  TerminationSignals();
  ~TerminationSignals() override;
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

  /// From now on `received` is emitted on this thread, which has an event loop.
  void listen();

 signals:
  void received();

 private:
  FileDescriptor signals_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace Corvella
