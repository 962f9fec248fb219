#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/Eventually.h"
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
  RealMpv(const std::string& address, const Options& options)
      : address_(address), process_(commandFor(options), {"DBUS_SESSION_BUS_ADDRESS=" + address}) {
    // The title and the url stand there before the file is open, the length does not.
    const auto ready = [this] { return tells("Metadata", "mpris:length"); };
    eventually([&] { return ready() || !process_.running(); });
    if (!ready()) throw std::runtime_error("no mpv: " + process_.errors());
  }

  /// Its name on a bus without another mpv.
  static std::string busName() { return "org.mpris.MediaPlayer2.mpv"; }

  /// Whether another program sees that text, "double 0.5", in a property of the Player interface,
  /// in the words of dbus-send.
  bool tells(const std::string& property, const std::string& text) const {
    Process look({"dbus-send", "--bus=" + address_, "--print-reply=literal", "--dest=" + busName(),
                  "/org/mpris/MediaPlayer2", "org.freedesktop.DBus.Properties.Get",
                  "string:org.mpris.MediaPlayer2.Player", "string:" + property});
    look.wait();
    return look.output().find(text) != std::string::npos;
  }

  /// Sends its process a signal: SIGKILL ends it as a crash would, SIGSTOP hangs it.
  void send(int signal) { process_.kill(signal); }

 private:
  static std::vector<std::string> commandFor(const Options& options) {
    std::vector<std::string> command{"mpv",        "--no-config", "--idle=yes",
                                     "--no-video", "--ao=null",   "--no-terminal"};
    command.emplace_back("--script=/usr/lib/mpv-mpris/mpris.so");
    if (options.paused) command.emplace_back("--pause");
    command.insert(command.end(), options.files.begin(), options.files.end());
    return command;
  }

  std::string address_;
  Process process_;
};

}  // namespace Corvella
