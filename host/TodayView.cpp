#include "host/TodayView.h"

#include <chrono>
#include <utility>

namespace Corvella {

namespace {

using namespace std::chrono_literals;

constexpr auto kHeartbeat = 500ms;
constexpr auto kLongestSilence = 1s;
/// How often the widget appears anew while there is no player, or a silent one.
constexpr int kBeatsBetweenAppearances = 4;

/// What a silent player is called in the heading, where there is room for so much.
QString shortened(const QString& player) {
  constexpr qsizetype kLongest = 24;
  return player.size() > kLongest ? player.left(kLongest - 1) + u'\u2026' : player;
}

HostServices withRunner(const HostServices& services, ScriptRunner& runner) {
  return {.clock = services.clock,
          .scriptRunner = runner,
          .bundle = services.bundle,
          .imageDecoder = services.imageDecoder,
          .fontFinder = services.fontFinder,
          .textMeasurer = services.textMeasurer};
}

}  // namespace

TodayView::TodayView(const HostServices& services, WidgetBridge& bridge, const QString& player)
    : player_(shortened(player)),
      bridge_(bridge),
      watch_(services.scriptRunner, services.clock),
      extension_(withRunner(services, watch_), bridge) {
  heartbeat_.setInterval(kHeartbeat);
  connect(&heartbeat_, &QTimer::timeout, this, &TodayView::beat);
  connect(&bridge, &WidgetBridge::reported, this,
          [this](NCUpdateResult result) { report_ = result; });
  extension_.performUpdate();
}

TodayView::~TodayView() {
  if (!window_) return;
  window_->disconnect(this);
  window_->hide();
}

TodayWindow& TodayView::window() {
  if (!window_) {
    window_ = std::make_unique<TodayWindow>();
    connectWindow();
  }
  return *window_;
}

void TodayView::connectWindow() {
  auto& panel = window_->panel();
  connect(&bridge_, &WidgetBridge::displayShown, window_.get(), &TodayWindow::apply);
  connect(&bridge_, &WidgetBridge::pingAnswered, &panel, &WidgetPanel::acknowledge);
  connect(window_.get(), &TodayWindow::restored, this, &TodayView::appear);
  connect(window_.get(), &TodayWindow::hidden, this, &TodayView::disappear);
  connect(window_.get(), &TodayWindow::closeRequested, this, &TodayView::closeRequested);
  connect(&panel, &WidgetPanel::clicked, this,
          [this](const QString& control) { extension_.click(control.toStdString()); });
  connect(&panel, &WidgetPanel::valueChosen, this,
          [this](const QString& control, double value, quint64 input) {
            extension_.setValue(control.toStdString(), value);
            extension_.ping(input);
          });
}

void TodayView::open() {
  appear();  // The widget prepares itself while the window is made.
  window().open();
}

void TodayView::hide() {
  if (window_) window_->hide();
}

void TodayView::toggle() {
  open_ ? hide() : open();
}

void TodayView::appear() {
  if (std::exchange(open_, true)) return;
  beatsSinceAppearance_ = 0;
  silent_ = false;
  report_.reset();
  extension_.appear();
  heartbeat_.start();
  emit appeared();
}

void TodayView::disappear() {
  if (!std::exchange(open_, false)) return;
  heartbeat_.stop();
  window_->setNotice({});
  extension_.disappear();
  emit disappeared();
}

void TodayView::beat() {
  const bool silent = isSilent();
  window_->showDate();
  window_->setNotice(silent ? player_ + " does not answer" : QString());
  ++beatsSinceAppearance_;
  // What the widget showed of a silent player may be wrong by now.
  const bool answersAgain = std::exchange(silent_, silent) && !silent;
  const bool looksAgain = (report_ == NCUpdateResultNoData || silent) && !watch_.isBusy() &&
                          beatsSinceAppearance_ >= kBeatsBetweenAppearances;
  if (!answersAgain && !looksAgain) return;
  beatsSinceAppearance_ = 0;
  extension_.appear();
}

bool TodayView::isSilent() const {
  return watch_.silence() > kLongestSilence;
}

}  // namespace Corvella
