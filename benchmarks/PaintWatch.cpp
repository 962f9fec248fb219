#include "benchmarks/PaintWatch.h"

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace Corvella {

namespace {

void print(double nanoseconds) {
  std::printf("%.0f\n", nanoseconds / 1000);
  std::fflush(stdout);
}

}  // namespace

PaintWatch::PaintWatch(const std::string& start, int stallSeconds,
                       std::function<bool(QObject&)> isMeant)
    : start_(std::stoll(start)), stallSeconds_(stallSeconds), isMeant_(std::move(isMeant)) {
  QCoreApplication::instance()->installEventFilter(this);
}

bool PaintWatch::eventFilter(QObject* watched, QEvent* event) {
  if (found_ || event->type() != QEvent::Paint || !isMeant_(*watched)) return false;
  found_ = true;
  // The window goes to the screen at the end of this turn of the event loop.
  QTimer::singleShot(0, this, &PaintWatch::painted);
  return false;
}

void PaintWatch::painted() {
  const std::chrono::nanoseconds now = std::chrono::steady_clock::now().time_since_epoch();
  print(static_cast<double>(now.count() - start_));
  QCoreApplication::instance()->removeEventFilter(this);
  if (stallSeconds_ > 0) watchTurns();
}

void PaintWatch::watchTurns() {
  turns_.setTimerType(Qt::PreciseTimer);
  connect(&turns_, &QTimer::timeout, this, [this] {
    longest_ = std::max(longest_, sinceTurn_.nsecsElapsed());
    sinceTurn_.restart();
  });
  sinceTurn_.start();
  turns_.start(1);
  QTimer::singleShot(stallSeconds_ * 1000, this, [this] { print(static_cast<double>(longest_)); });
}

}  // namespace Corvella
