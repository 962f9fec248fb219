#include <QApplication>

#include <gmock/gmock.h>

/// Runs the tests of the host inside a Qt application whose windows nobody sees.
int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleMock(&argc, argv);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
