#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace Corvella {

/// Reads files on threads of its own, so that a file system that does not answer, such as a network
/// mount whose server is gone, holds up no caller beyond the caller's deadline.
///
/// A read that is late is given up: nobody waits for it any more, and its thread ends when the file
/// system lets go of it. Until then further reads of its address fail at once, and so does every
/// read while `kMostGivenUp` reads are in that state. Any thread, and calls may overlap; of several
/// that read the same address each waits for the one before it.
class TimedReads {
 public:
  using Deadline = std::chrono::steady_clock::time_point;
  static constexpr std::size_t kMostGivenUp = 8;

  TimedReads();
  /// Returns at once, even while reads are stuck.
  ~TimedReads();
  TimedReads(const TimedReads&) = delete;
  TimedReads& operator=(const TimedReads&) = delete;

  /// What `read()` returns; an empty result when it failed or threw, or was not there by the
  /// deadline. `read` runs on another thread and may outlive this call and this object, so it must
  /// own all that it uses.
  template <typename Read>
  auto read(const std::string& address, Deadline deadline, Read read) -> decltype(read()) {
    using Result = decltype(read());
    const auto result = std::make_shared<Result>();
    const bool ended =
        run(address, deadline, [result, read = std::move(read)] { *result = read(); });
    return ended ? std::move(*result) : Result();
  }

 private:
  struct Job;
  struct Shared;

  /// Whether `work` was done by the deadline.
  bool run(const std::string& address, Deadline deadline, std::function<void()> work);

  std::shared_ptr<Shared> shared_;  ///< Kept by each thread too, so that none needs this object.
};

}  // namespace Corvella
