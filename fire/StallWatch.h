#pragma once

#include <QObject>
#include <QTimer>
#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include <pthread.h>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// Measures how long the event loop of this thread is held up, from inside of the program.
///
/// A turn of the loop may be late because the machine gave the thread no processor. The kernel
/// counts that time for each thread, and it is taken off. A second thread only sleeps for a few
/// milliseconds at a time and sees how late it wakes: what it was late by is no stall of the window
/// either.
///
/// GUI thread, with a thread of its own beside it.
class StallWatch final : public QObject {
 public:
  struct Stall {
    std::chrono::microseconds own{};    ///< Without what the machine held up.
    std::chrono::microseconds whole{};  ///< Of the same turn.
    std::string stack;  ///< Where the thread was in the midst of it; empty for a short one.
  };

  StallWatch();
  ~StallWatch() override;
  StallWatch(const StallWatch&) = delete;
  StallWatch& operator=(const StallWatch&) = delete;

  /// The longest one so far.
  const Stall& longest() const { return longest_; }

 private:
  static constexpr std::size_t kMostFrames = 64;

  static void noteStack(int signal);
  void turn();
  void watchFromOutside();
  std::string stackText() const;

  const pthread_t watched_ = ::pthread_self();
  const FileDescriptor schedule_;
  QTimer turns_;
  std::chrono::nanoseconds waited_{};  // For a processor, up to the last turn.
  Stall longest_;
  std::atomic<std::chrono::nanoseconds> lastTurn_;
  std::atomic<std::chrono::nanoseconds> lateness_{};  // Of the other thread, since the last turn.
  std::atomic<bool> ending_ = false;
  std::thread outside_;
};

}  // namespace Corvella
