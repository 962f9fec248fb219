#include "fire/Figures.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include "benchmarks/SystemFigures.h"

namespace Corvella {

namespace {

double entriesOf(pid_t program, const char* folder) {
  std::error_code error;
  const std::filesystem::directory_iterator entries(
      "/proc/" + std::to_string(program) + "/" + folder, error);
  if (error) throw std::runtime_error("Corvella has ended");
  return static_cast<double>(std::distance(begin(entries), end(entries)));
}

std::string excess(const char* what, double value, double bound) {
  if (value <= bound) return {};
  std::array<char, 200> text{};
  std::snprintf(text.data(), text.size(), "%.0f %s instead of at most %.0f; ", value, what, bound);
  return text.data();
}

}  // namespace

Figures Figures::of(pid_t program) {
  return {.threads = entriesOf(program, "task"),
          .descriptors = entriesOf(program, "fd"),
          .megabytes = SystemFigures::anonymousMegabytes(program)};
}

Figures Figures::most(const Figures& one, const Figures& other) {
  return {.threads = std::max(one.threads, other.threads),
          .descriptors = std::max(one.descriptors, other.descriptors),
          .megabytes = std::max(one.megabytes, other.megabytes)};
}

std::string Figures::beyond(const Figures& bounds) const {
  return excess("threads", threads, bounds.threads) +
         excess("descriptors", descriptors, bounds.descriptors) +
         excess("MB of memory", megabytes, bounds.megabytes);
}

Figures Figures::operator+(const Figures& more) const {
  return {.threads = threads + more.threads,
          .descriptors = descriptors + more.descriptors,
          .megabytes = megabytes + more.megabytes};
}

}  // namespace Corvella
