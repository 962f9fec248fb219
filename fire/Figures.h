#pragma once

#include <string>

#include <sys/types.h>

namespace Corvella {

/// What a program has of the system at one moment.
struct Figures {
  double threads = 0;
  double descriptors = 0;
  double megabytes = 0;  ///< Of memory that no file stands behind.

  /// Throws `std::runtime_error` when the program has ended.
  static Figures of(pid_t program);

  /// The greater one of each.
  static Figures most(const Figures& one, const Figures& other);

  /// What is more here than there, and by how much; empty when nothing is.
  std::string beyond(const Figures& bounds) const;

  Figures operator+(const Figures& more) const;
};

}  // namespace Corvella
