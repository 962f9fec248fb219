#pragma once

#include <QString>
#include <future>
#include <thread>

namespace Corvella {

/// Gets the system's fonts ready on a thread of its own while the program starts: their
/// configuration while Qt reaches for the display server, and the list that Qt makes of them while
/// the window is made. The first text would have to wait for both. One thread, but for what says
/// otherwise.
class FontPreload {
 public:
  /// Begins to read the configuration.
  FontPreload();
  /// Ends as `finish` does.
  ~FontPreload();
  FontPreload(const FontPreload&) = delete;
  FontPreload& operator=(const FontPreload&) = delete;

  /// Waits until the configuration is read, and gives the family that it takes for a sans serif
  /// font; empty where it has none. Any thread.
  const QString& sansSerif() const { return sansSerif_.get(); }

  /// Has Qt list the fonts. Called once at most, when there is an application.
  void listFonts();

  /// Waits until all is ready that has begun. An application does not end before.
  void finish();

 private:
  std::shared_future<QString> sansSerif_;
  std::promise<bool> application_;  // Whether there is one.
  bool isTold_ = false;
  std::thread thread_;
};

}  // namespace Corvella
