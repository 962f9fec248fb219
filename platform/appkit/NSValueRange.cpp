#include "platform/appkit/NSValueRange.h"

#include <algorithm>
#include <cmath>
#include <limits>

NSValueRange::NSValueRange(double minValue, double maxValue) {
  setMinValue(minValue);
  setMaxValue(maxValue);
}

double NSValueRange::clamped(double value) const {
  if (std::isnan(value)) return minValue_;
  return std::max(minValue_, std::min(value, maxValue_));
}

bool NSValueRange::set(double& end, double value) {
  constexpr double farthest = std::numeric_limits<double>::max() / 2;
  if (std::isnan(value)) return false;
  const double finite = std::clamp(value, -farthest, farthest);
  if (finite == end) return false;
  end = finite;
  return true;
}
