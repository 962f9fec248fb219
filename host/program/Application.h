#pragma once

#include <QApplication>
#include <array>
#include <string>

namespace Corvella {

/// Qt's application with the looks of the Today view. It takes none of the program's arguments.
class Application {
 public:
  Application();

 private:
  std::string name_ = "corvella";
  int count_ = 1;
  std::array<char*, 2> arguments_{name_.data(), nullptr};  // Qt refers to them.
  QApplication application_{count_, arguments_.data()};
};

}  // namespace Corvella
