#pragma once

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
  };

  /// Returns when the player has opened the first of its files. Throws std::runtime_error when it
  /// ends before that, or takes more than 20 seconds.
  RealMpv(const std::string& address, const Options& options);

  /// Its name on a bus without another mpv.
  std::string busName() const { return "org.mpris.MediaPlayer2.mpv"; }

  /// What another program sees.
  std::string status() { return client_.text(busName(), "PlaybackStatus"); }
  double volume() { return client_.number(busName(), "Volume"); }

  /// Ends the player as a crash would, and returns when it is gone.
  void kill();

 private:
  BusClient client_;
  Process process_;
};

}  // namespace Corvella
