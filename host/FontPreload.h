#pragma once

#include <thread>

namespace Corvella {

/// Reads the system's font configuration on a thread of its own while the program starts.
///
/// Qt reads it when the first text is laid out, which the window would have to wait for; read
/// already, it is taken as it is.
class FontPreload {
 public:
  FontPreload();
  /// Waits until everything is read.
  ~FontPreload();
  FontPreload(const FontPreload&) = delete;
  FontPreload& operator=(const FontPreload&) = delete;

 private:
  std::thread thread_;
};

}  // namespace Corvella
