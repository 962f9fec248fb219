// Corvella as it is, under a watch that tells when it has shown the first track. Arguments: those
// of PaintWatch, the player, and what to do while the event loop is watched: "volume" has the
// volume key pressed now and then, "lyrics" has the lyrics unfolded, paged through and folded;
// "titles" writes each title that comes on the screen.

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QTimer>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/PaintWatch.h"
#include "host/program/TodayCommand.h"

namespace {

using namespace std::chrono_literals;

std::string start;
int stallSeconds = 0;
std::vector<int> keys;

std::vector<int> keysFor(const std::string& work) {
  if (work == "volume") return {Qt::Key_Up};
  constexpr std::size_t kPages = 9;
  std::vector<int> all(1 + kPages, Qt::Key_PageDown);
  all.front() = Qt::Key_L;
  return all;
}

bool isATrack(QObject& painted) {
  const auto* const label = qobject_cast<QLabel*>(&painted);
  return label != nullptr && label->objectName() == "songTitle" && !label->text().isEmpty() &&
         label->text() != "No Song Playing";
}

/// Presses the next key, round and round.
void pressNext() {
  static std::size_t next = 0;
  const auto key = keys[next++ % keys.size()];
  for (auto* const window : QApplication::topLevelWidgets()) {
    if (!window->isVisible()) continue;
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(window, &press);
  }
}

/// Writes each other title to standard output when the window that shows it goes to the screen.
class TitleWatch final : public QObject {
 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::Paint || !isATrack(*watched)) return false;
    const auto title = qobject_cast<QLabel*>(watched)->text();
    if (title == title_) return false;
    title_ = title;
    // The window goes to the screen at the end of this turn of the event loop.
    QTimer::singleShot(0, this, [this] {
      std::printf("%s\n", qPrintable(title_));
      std::fflush(stdout);
    });
    return false;
  }

 private:
  QString title_;
};

bool writesTitles = false;
std::unique_ptr<TitleWatch> titleWatch;
std::unique_ptr<Corvella::PaintWatch> paintWatch;
std::unique_ptr<QTimer> presses;

/// Runs as soon as there is an application, before anything else of it.
void watch() {
  if (writesTitles) {
    titleWatch = std::make_unique<TitleWatch>();
    QCoreApplication::instance()->installEventFilter(titleWatch.get());
    return;
  }
  paintWatch = std::make_unique<Corvella::PaintWatch>(start, stallSeconds, isATrack);
  if (stallSeconds == 0) return;
  presses = std::make_unique<QTimer>();
  QObject::connect(presses.get(), &QTimer::timeout, pressNext);
  presses->start(100ms);
}
Q_COREAPP_STARTUP_FUNCTION(watch)

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  start = argv[1];
  stallSeconds = std::stoi(argv[2]);
  writesTitles = std::string(argv[4]) == "titles";
  keys = keysFor(argv[4]);
  return Corvella::runTodayCommand({.player = argv[3]});
}
