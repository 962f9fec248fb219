#include "host/panel/TodayView.h"

#include <QByteArray>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "host/controls/Theme.h"

namespace Corvella {

using namespace std::chrono_literals;

TodayView::TodayView(StartWidget start, const std::string& player) : start_(std::move(start)) {
  connect(&pages_, &PageTurner::pageIsDue, this, [this] { extension().turnPage(); });
  everyMinute_.setInterval(1min);
  everyMinute_.setTimerType(Qt::VeryCoarseTimer);
  connect(&everyMinute_, &QTimer::timeout, this, [this] { window_->showDate(); });
  adopt(startRun(player), player);
}

TodayView::~TodayView() {
  if (!window_) return;
  window_->disconnect(this);
  window_->hide();
}

std::unique_ptr<TodayView::Run> TodayView::startRun(const std::string& player) {
  auto run = std::make_unique<Run>();
  run->session = start_(player, run->bridge, run->bridge);
  return run;
}

void TodayView::adopt(std::unique_ptr<Run> run, const std::string& player) {
  run_ = std::move(run);
  choice_ = player;
  display_ = {};
  playerHasLeft_ = false;
  rests_ = false;
  pages_.stop();
  auto& bridge = run_->bridge;
  connect(&bridge, &WidgetBridge::displayShown, this, &TodayView::show);
  connect(&bridge, &WidgetBridge::playerHasNews, this, &TodayView::hear);
  connect(&bridge, &WidgetBridge::hasSettled, this, &TodayView::settled);
  connect(&bridge, &WidgetBridge::failed, this, &TodayView::failed);
}

void TodayView::showPlayer(const std::string& player) try {
  replaceRun(startRun(player), player);
} catch (const std::runtime_error& error) {
  emit failed(error.what());
}

void TodayView::replaceRun(std::unique_ptr<Run> run, const std::string& player) {
  endLater(std::exchange(run_, nullptr));
  adopt(std::move(run), player);
  if (window_) {
    connectRunToWindow();
    window_->panel().forgetInput();
  }
  if (open_) begin();
}

/// Nothing that a player has left behind may stay on the display: no sign, no bar, no lyrics.
void TodayView::startAnew() {
  showPlayer(std::string(choice_));
}

/// The end of a session waits for the script that is running. On the GUI thread this would stall
/// the window for as long as a player takes to answer, so it happens on a thread of its own.
void TodayView::endLater(std::unique_ptr<Run> run) {
  std::erase_if(endingRuns_, [](const auto& ending) {
    return ending->end.wait_for(0s) == std::future_status::ready;
  });
  run->bridge.disconnect();
  auto session = std::move(run->session);
  run->end =
      std::async(std::launch::async, [session = std::move(session)]() mutable { session.reset(); });
  endingRuns_.push_back(std::move(run));
}

TodayWindow& TodayView::window() {
  if (!window_) {
    window_ = std::make_unique<TodayWindow>();
    connectWindow();
    connectRunToWindow();
  }
  return *window_;
}

void TodayView::connectWindow() {
  auto& panel = window_->panel();
  connect(window_.get(), &TodayWindow::restored, this, &TodayView::appear);
  connect(window_.get(), &TodayWindow::hidden, this, &TodayView::disappear);
  connect(window_.get(), &TodayWindow::playersAsked, this, &TodayView::showPlayerMenu);
  connect(window_.get(), &TodayWindow::closeRequested, this, &TodayView::closeRequested);
  connect(&panel, &WidgetPanel::lookWanted, this, [this] {
    extension().turnPage();
    extension().settle(0);
  });
  connect(&panel, &WidgetPanel::clicked, this,
          [this](const QString& control) { extension().click(control.toStdString()); });
  connect(&panel, &WidgetPanel::valueChosen, this,
          [this](const QString& control, double value, quint64 input) {
            extension().setValue(control.toStdString(), value);
            extension().ping(input);
          });
}

void TodayView::connectRunToWindow() {
  connect(&run_->bridge, &WidgetBridge::displayShown, window_.get(), &TodayWindow::apply);
  connect(&run_->bridge, &WidgetBridge::hasSettled, &window_->panel(),
          &WidgetPanel::takeWantedStep);
  connect(&run_->bridge, &WidgetBridge::pingAnswered, &window_->panel(), &WidgetPanel::acknowledge);
}

void TodayView::open() {
  appear();  // Before the window is made, so that the widget prepares itself meanwhile.
  window().open();
}

void TodayView::hide() {
  if (window_) window_->hide();
}

void TodayView::toggle() {
  open_ && window_->isInFront() ? hide() : open();
}

void TodayView::settle() {
  extension().settle(0);
}

void TodayView::appear() {
  if (open_) return;
  if (playerHasLeft_) startAnew();
  open_ = true;
  begin();
  everyMinute_.start();
  emit appeared();
}

/// Has the widget appear, which has just started or was hidden.
void TodayView::begin() {
  rests_ = false;
  run_->bridge.setListening(true);
  extension().appear();
  describePlayer();
}

void TodayView::disappear() {
  if (!std::exchange(open_, false)) return;
  everyMinute_.stop();
  pages_.stop();
  run_->bridge.setListening(false);
  extension().disappear();
  setTitle({});
  emit disappeared();
}

void TodayView::show(const WidgetSnapshot& snapshot) {
  display_.apply(snapshot);
  describePlayer();
  const auto* const title = display_.content<TextFieldContent>("songTitle");
  if (open_ && title != nullptr) setTitle(QString::fromStdString(title->text));
}

void TodayView::setTitle(const QString& title) {
  title_ = title;
  emit titleChanged(title);
}

/// What is told while the view is hidden costs nothing: it reads everything anew when it opens.
void TodayView::hear(PlayerNews news) {
  playerHasLeft_ |= news == PlayerNews::Left;
  if (!open_) return;
  if (news != PlayerNews::Left) describePlayer();
  switch (news) {
    case PlayerNews::Changed:
    case PlayerNews::Refused:
      return pages_.turnNow();
    case PlayerNews::Halted:
      return pages_.turnSoon();
    case PlayerNews::Commanded:
      return pages_.turnLater();
    case PlayerNews::Left:
      return startAnew();
    case PlayerNews::Described:
      return;
  }
}

void TodayView::describePlayer() {
  const auto player = run_->session->player();
  if (window_) window_->showPlayer(player);
  if (open_) restWhile(player.silent);
}

/// The widget asks a player that plays once a second, and reports each question that fails.
void TodayView::restWhile(bool playerIsSilent) {
  if (std::exchange(rests_, playerIsSilent) == playerIsSilent) return;
  playerIsSilent ? extension().disappear() : extension().appear();
}

PlayerList TodayView::players() const {
  const auto& session = *run_->session;
  return {.choice = choice_, .current = session.player(), .players = session.players()};
}

void TodayView::raisePlayer() const {
  run_->session->raisePlayer();
}

void TodayView::showPlayerMenu() {
  if (!menu_) {
    menu_ = std::make_unique<PlayerMenu>([this] { return players(); }, window_.get());
    // A window of its own does not take over the colours of the panel.
    menu_->setPalette(theme::palette());
    connect(menu_.get(), &PlayerMenu::chosen, this, &TodayView::showPlayer);
    connect(menu_.get(), &PlayerMenu::raiseWanted, this, &TodayView::raisePlayer);
  }
  menu_->popup(window_->placeOfPlayerMenu());
}

}  // namespace Corvella
