// Corvella as it is, under a watch that tells when it has shown the first track. Arguments: those
// of PaintWatch, and the player. While its event loop is watched, its volume key is pressed now and
// then.

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QTimer>
#include <chrono>
#include <memory>
#include <string>

#include "benchmarks/PaintWatch.h"
#include "host/TodayProgram.h"

namespace {

using namespace std::chrono_literals;

std::string start;
int stallSeconds = 0;

bool isATrack(QObject& painted) {
  const auto* const label = qobject_cast<QLabel*>(&painted);
  return label != nullptr && label->objectName() == "songTitle" && !label->text().isEmpty() &&
         label->text() != "No Song Playing";
}

void pressVolumeUp() {
  for (auto* const window : QApplication::topLevelWidgets()) {
    if (!window->isVisible()) continue;
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier);
    QApplication::sendEvent(window, &press);
  }
}

std::unique_ptr<Corvella::PaintWatch> paintWatch;
std::unique_ptr<QTimer> presses;

/// Runs as soon as there is an application, before anything else of it.
void watch() {
  paintWatch = std::make_unique<Corvella::PaintWatch>(start, stallSeconds, isATrack);
  if (stallSeconds == 0) return;
  presses = std::make_unique<QTimer>();
  QObject::connect(presses.get(), &QTimer::timeout, pressVolumeUp);
  presses->start(100ms);
}
Q_COREAPP_STARTUP_FUNCTION(watch)

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  start = argv[1];
  stallSeconds = std::stoi(argv[2]);
  return Corvella::runTodayView({.player = argv[3]});
}
