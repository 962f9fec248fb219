#pragma once

#include <string>

#include "tests/support/PrivateBus.h"

namespace Corvella {

/// Reads a player's properties with sd-bus and nothing else: the yardstick.
class RawReader {
 public:
  RawReader(const std::string& address, std::string player);

  /// One property of the player, read to its last byte. Throws std::system_error.
  void read(const char* property);

  /// What a tick needs: position, metadata and volume.
  void readTick();

 private:
  BusConnection bus_;
  std::string player_;
};

}  // namespace Corvella
