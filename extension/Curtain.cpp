#include "extension/Curtain.h"

namespace Corvella {

void Curtain::fall(std::chrono::milliseconds longest) {
  rise();
  end_ = runLoop_.now() + longest;
  runLoop_.addTimer(wakeUp_, *end_);
}

void Curtain::rise() {
  if (!end_) return;
  end_.reset();
  runLoop_.removeTimer(*wakeUp_);
}

}  // namespace Corvella
