#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/Eventually.h"
#include "tests/support/Process.h"

namespace Corvella {

/// An X server without a screen, of 1280 × 800 pixels. It does not start anew when its last client
/// leaves, which would turn away the next one that comes just then.
class XServer {
 public:
  /// Returns when the server takes connections. Throws std::runtime_error when it never does.
  XServer() {
    if (!eventually([this] { return process_.output().ends_with('\n'); })) {
      throw std::runtime_error("Xvfb does not start: " + process_.errors());
    }
    const auto number = process_.output();
    display_.assign(":").append(number, 0, number.find('\n'));
  }

  /// What DISPLAY is set to.
  const std::string& display() const { return display_; }

  /// What a program prints that looks at the screen; empty when it fails.
  std::string outputOf(const std::vector<std::string>& command) const {
    Process look(command, {"DISPLAY=" + display_});
    return look.wait() == 0 ? look.output() : std::string();
  }

 private:
  Process process_{
      {"Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset"}};
  std::string display_;
};

}  // namespace Corvella
