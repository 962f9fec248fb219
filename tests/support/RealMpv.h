#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/support/BusClient.h"
#include "tests/support/Process.h"

namespace Corvella {

/// A real player, mpv with its MPRIS plug-in, on a bus of the test's own; without screen and sound.
class RealMpv {
 public:
  struct Options {
    std::vector<std::string> files;
    bool paused = false;
    bool looped = false;  ///< Plays the files over and over.
  };

  /// Returns when the player is on the bus and, if it got files, has opened the first. Throws
  /// std::runtime_error when it ends before that, or takes more than 20 seconds.
  RealMpv(const std::string& address, Options options);

  /// Its name on the bus; a second one on the same bus has its process id in the name.
  const std::string& busName() const { return busName_; }

  /// Ends the player as a crash would, and returns when it is gone.
  void kill();

 private:
  std::optional<std::string> nameOnTheBus();
  bool hasATrack();

  BusClient client_;
  Process process_;
  std::string busName_;
};

}  // namespace Corvella
