#include "benchmarks/SystemFigures.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>

namespace Corvella::SystemFigures {

namespace {

std::filesystem::path folderOf(pid_t program) {
  return "/proc/" + std::to_string(program);
}

/// The number behind a word of a file; absent when there is none.
std::optional<double> numberAfter(const std::filesystem::path& file, const std::string& word) {
  std::ifstream lines(file);
  for (std::string read; lines >> read;) {
    double number = 0;
    if (read == word && lines >> number) return number;
  }
  return std::nullopt;
}

double megabytes(pid_t program, const std::string& kind) {
  const auto kilobytes = numberAfter(folderOf(program) / "smaps_rollup", kind);
  if (!kilobytes) throw std::runtime_error("a program that was measured has ended");
  return *kilobytes / 1024;
}

}  // namespace

double residentMegabytes(pid_t program) {
  return megabytes(program, "Rss:");
}

double anonymousMegabytes(pid_t program) {
  return megabytes(program, "Anonymous:");
}

double processorSeconds(pid_t program) {
  double sum = 0;
  for (const auto& thread : std::filesystem::directory_iterator(folderOf(program) / "task")) {
    double nanoseconds = 0;
    std::ifstream(thread.path() / "schedstat") >> nanoseconds;
    sum += nanoseconds / 1e9;
  }
  return sum;
}

double sleeps(pid_t program, pid_t except) {
  double sum = 0;
  for (const auto& thread : std::filesystem::directory_iterator(folderOf(program) / "task")) {
    if (thread.path().filename() == std::to_string(except)) continue;
    sum += numberAfter(thread.path() / "status", "voluntary_ctxt_switches:").value_or(0);
  }
  return sum;
}

}  // namespace Corvella::SystemFigures
