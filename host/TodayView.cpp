#include "host/TodayView.h"

#include <chrono>

namespace Corvella {

namespace {

using namespace std::chrono_literals;

constexpr auto kHeartbeat = 500ms;
constexpr auto kLongestSilence = 1s;
/// How often the widget is shown anew while there is no player, or a silent one.
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
      watch_(services.scriptRunner, services.clock),
      extension_(withRunner(services, watch_), bridge) {
  heartbeat_.setInterval(kHeartbeat);
  connect(&heartbeat_, &QTimer::timeout, this, &TodayView::beat);
  connect(&bridge, &WidgetBridge::displayShown, &window_, &TodayWindow::apply);
  connect(&bridge, &WidgetBridge::reported, this,
          [this](NCUpdateResult result) { report_ = result; });
  connect(&bridge, &WidgetBridge::pingAnswered, &window_.panel(), &WidgetPanel::acknowledge);
  connectWindow();
  extension_.performUpdate();
}

TodayView::~TodayView() {
  window_.disconnect(this);
  window_.hide();
}

void TodayView::connectWindow() {
  connect(&window_, &TodayWindow::shown, this, &TodayView::appear);
  connect(&window_, &TodayWindow::hidden, this, &TodayView::disappear);
  connect(&window_.panel(), &WidgetPanel::clicked, this,
          [this](const QString& control) { extension_.click(control.toStdString()); });
  connect(&window_.panel(), &WidgetPanel::valueChosen, this,
          [this](const QString& control, double value, quint64 input) {
            extension_.setValue(control.toStdString(), value);
            extension_.ping(input);
          });
}

void TodayView::open() {
  window_.open();
}

void TodayView::hide() {
  window_.hide();
}

void TodayView::toggle() {
  window_.isVisible() ? hide() : open();
}

void TodayView::appear() {
  beatsSinceAppearance_ = 0;
  report_.reset();
  extension_.appear();
  heartbeat_.start();
}

void TodayView::disappear() {
  heartbeat_.stop();
  window_.setNotice({});
  extension_.disappear();
}

void TodayView::beat() {
  window_.showDate();
  window_.setNotice(isSilent() ? player_ + " does not answer" : QString());
  ++beatsSinceAppearance_;
  const bool nothingShown = report_ == NCUpdateResultNoData || isSilent();
  if (!nothingShown || watch_.isBusy() || beatsSinceAppearance_ < kBeatsBetweenAppearances) return;
  beatsSinceAppearance_ = 0;
  extension_.appear();
}

bool TodayView::isSilent() const {
  return watch_.silence() > kLongestSilence;
}

}  // namespace Corvella
