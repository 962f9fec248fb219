// Corvella as it is, under a watch that answers each message on a channel with what the window
// shows and how long it has been held up at most. Arguments: the descriptor of the channel.

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QSlider>
#include <QSocketNotifier>
#include <QWidget>
#include <chrono>
#include <memory>
#include <string>

#include "fire/Channel.h"
#include "fire/StallWatch.h"
#include "host/controls/RangeWidget.h"
#include "host/program/TodayCommand.h"

namespace {

using namespace Corvella;

int channelDescriptor = -1;

struct Watch {
  Channel channel{channelDescriptor};
  QSocketNotifier asked{channelDescriptor, QSocketNotifier::Read};
  StallWatch stalls;
};
std::unique_ptr<Watch> watch;

/// The panel, once it has been made; null before.
QWidget* panel() {
  for (auto* const window : QApplication::topLevelWidgets()) {
    if (window->inherits("Corvella::TodayWindow")) return window;
  }
  return nullptr;
}

void describe(const QWidget& window, Fields& fields) {
  const auto frame = window.geometry();
  fields["visible"] = std::to_string(window.isVisible());
  fields["x"] = std::to_string(frame.x());
  fields["y"] = std::to_string(frame.y());
  fields["width"] = std::to_string(frame.width());
  fields["height"] = std::to_string(frame.height());
  for (const auto* label : window.findChildren<QLabel*>()) {
    fields[label->objectName().toStdString()] = label->text().toStdString();
  }
  for (const auto* slider : window.findChildren<QSlider*>()) {
    fields[slider->objectName().toStdString()] = std::to_string(slider->value());
  }
  for (const auto* button : window.findChildren<QAbstractButton*>()) {
    fields[button->objectName().toStdString()] = button->accessibleName().toStdString();
  }
  for (const auto* control : window.findChildren<QWidget*>()) {
    const auto* const range = dynamic_cast<const RangeWidget*>(control);
    if (range != nullptr) {
      fields[control->objectName().toStdString()] = std::to_string(range->rangeValue());
    }
  }
}

void answer() {
  if (!watch->channel.receive(std::chrono::milliseconds(0))) {
    watch->asked.setEnabled(false);  // Nobody asks any more.
    return;
  }
  const auto& longest = watch->stalls.longest();
  Fields fields{{"stall", std::to_string(longest.own.count())},
                {"whole stall", std::to_string(longest.whole.count())},
                {"stack", longest.stack}};
  if (const auto* const window = panel()) describe(*window, fields);
  watch->channel.send(written(fields));
}

/// Runs as soon as there is an application, before anything else of it.
void startWatch() {
  watch = std::make_unique<Watch>();
  QObject::connect(&watch->asked, &QSocketNotifier::activated, answer);
  // While there is an application: a timer must not outlive it.
  qAddPostRoutine([] { watch = nullptr; });
}
Q_COREAPP_STARTUP_FUNCTION(startWatch)

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  channelDescriptor = std::stoi(argv[1]);
  return Corvella::runTodayCommand({});
}
