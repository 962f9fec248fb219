#pragma once

#include <QApplication>
#include <array>
#include <string>

#include "host/FontPreload.h"

namespace Corvella {

/// An application of Qt's with the looks of the Today view. It takes none of the program's
/// arguments.
class Application {
 public:
  /// `fonts` outlives the application.
  explicit Application(FontPreload& fonts);
  ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

 private:
  FontPreload& fonts_;
  std::string name_ = "corvella";
  int count_ = 1;
  std::array<char*, 2> arguments_{name_.data(), nullptr};  // Qt refers to them.
  QApplication application_;
};

}  // namespace Corvella
