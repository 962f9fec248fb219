// The yardstick of what Corvella's window costs: a Qt program that shows an empty one of its size.
// Arguments: those of PaintWatch.

#include <QApplication>
#include <QWidget>
#include <string>

#include "benchmarks/PaintWatch.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const QApplication application(argc, argv);
  QWidget window(nullptr, Qt::Window | Qt::FramelessWindowHint);
  const Corvella::PaintWatch watch(argv[1], std::stoi(argv[2]),
                                   [&](QObject& painted) { return &painted == &window; });
  window.setFixedSize(344, 341);
  window.show();
  return QApplication::exec();
}
