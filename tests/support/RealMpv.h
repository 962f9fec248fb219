#pragma once

#include <string>
#include <vector>

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
  /// never does.
  RealMpv(const std::string& address, const Options& options);

  /// Its name on a bus without another mpv.
  static std::string busName() { return "org.mpris.MediaPlayer2.mpv"; }

  /// What another program sees of a property of the Player interface, in the words of dbus-send:
  /// "double 0.5". Empty when the player does not answer.
  std::string property(const std::string& name) const;

  /// Ends the player as a crash would, and returns when it is gone.
  void kill();

 private:
  std::string address_;
  Process process_;
};

}  // namespace Corvella
