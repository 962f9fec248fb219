#include "benchmarks/Ratio.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>

namespace Corvella {

namespace {

double microsecondsPerRun(const std::function<void()>& action, int runs) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < runs; ++i) action();
  const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
  return time.count() / runs;
}

double quantile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  return values.at(static_cast<std::size_t>(share * static_cast<double>(values.size() - 1)));
}

}  // namespace

Ratio ratioOf(const std::vector<double>& subjects, const std::vector<double>& yardsticks) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < subjects.size(); ++i) {
    ratios.push_back(subjects[i] / yardsticks.at(i));
  }
  return {.median = quantile(ratios, 0.5),
          .low = quantile(ratios, 0.1),
          .high = quantile(ratios, 0.9),
          .subjectMicroseconds = quantile(subjects, 0.5),
          .yardstickMicroseconds = quantile(yardsticks, 0.5)};
}

Ratio measureRatio(const std::function<void()>& subject, const std::function<void()>& yardstick,
                   int subjectRuns, int yardstickRuns, int pairs) {
  microsecondsPerRun(subject, subjectRuns);
  microsecondsPerRun(yardstick, yardstickRuns);

  std::vector<double> subjects;
  std::vector<double> yardsticks;
  for (int i = 0; i < pairs; ++i) {
    subjects.push_back(microsecondsPerRun(subject, subjectRuns));
    yardsticks.push_back(microsecondsPerRun(yardstick, yardstickRuns));
  }
  return ratioOf(subjects, yardsticks);
}

void printRatio(const std::string& what, const Ratio& ratio, double atMost) {
  std::printf("%s: %.4f (10%% to 90%%: %.4f to %.4f; %.2f us / %.2f us); at most %g: %s\n",
              what.c_str(), ratio.median, ratio.low, ratio.high, ratio.subjectMicroseconds,
              ratio.yardstickMicroseconds, atMost, ratio.median <= atMost ? "kept" : "MISSED");
}

}  // namespace Corvella
