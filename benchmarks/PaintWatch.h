#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>
#include <string>

namespace Corvella {

/// Watches a Qt program for a benchmark, which reads the lines that it writes to standard output:
/// first, when something has been painted for the first time, the microseconds since the program's
/// start; then, if asked for, the longest time between two turns of the event loop, in
/// microseconds.
///
/// GUI thread; made when there is an application, and lives as long.
class PaintWatch final : public QObject {
 public:
  /// `start` is a time of the steady clock, which is one for all processes, in nanoseconds. The
  /// turns are watched for `stallSeconds` from the first painting on, not at all when that is 0.
  /// `isMeant` tells whether an object that has just been asked to paint is the one waited for.
  PaintWatch(const std::string& start, int stallSeconds, std::function<bool(QObject&)> isMeant);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void painted();
  void watchTurns();

  const long long start_;
  const int stallSeconds_;
  const std::function<bool(QObject&)> isMeant_;
  bool found_ = false;
  QTimer turns_;
  QElapsedTimer sinceTurn_;
  qint64 longest_ = 0;  // Nanoseconds.
};

}  // namespace Corvella
