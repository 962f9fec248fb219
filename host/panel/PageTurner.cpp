#include "host/panel/PageTurner.h"

#include <algorithm>

namespace Corvella {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

PageTurner::PageTurner(QObject* parent)
    : QObject(parent), lastPage_(steady_clock::now() - kBetweenPages) {
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  timer_.callOnTimeout(this, [this] {
    lastPage_ = steady_clock::now();
    emit pageIsDue();
  });
}

void PageTurner::turnAfter(milliseconds gathering) {
  const auto sinceLast = duration_cast<milliseconds>(steady_clock::now() - lastPage_);
  turnIn(std::max(gathering, kBetweenPages - sinceLast));
}

void PageTurner::turnLater() {
  turnIn(kAfterCommand);
}

void PageTurner::turnIn(milliseconds delay) {
  if (timer_.isActive() && timer_.remainingTimeAsDuration() <= delay) return;
  timer_.start(delay);
}

}  // namespace Corvella
