#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Corvella {

/// How often a subject's time is that of a yardstick, over many pairs of short runs that take
/// turns, so that whatever else the machine does meets both alike.
struct Ratio {
  double median = 0;
  double low = 0;                    ///< The tenth part of all pairs lies below.
  double high = 0;                   ///< The tenth part of all pairs lies above.
  double subjectMicroseconds = 0;    ///< One run of the subject, median.
  double yardstickMicroseconds = 0;  ///< One run of the yardstick, median.
};

/// Of runs that took turns: `subjects[i]` and `yardsticks[i]` are a pair, in microseconds.
Ratio ratioOf(const std::vector<double>& subjects, const std::vector<double>& yardsticks);

/// Runs `subject` and `yardstick` in turns, `runs` times each per pair, for `pairs` pairs.
Ratio measureRatio(const std::function<void()>& subject, const std::function<void()>& yardstick,
                   int subjectRuns, int yardstickRuns, int pairs);

/// Prints the ratio with its spread beside the most that it may be.
void printRatio(const std::string& what, const Ratio& ratio, double atMost);

}  // namespace Corvella
