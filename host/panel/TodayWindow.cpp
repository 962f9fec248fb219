#include "host/panel/TodayWindow.h"

#include <QCloseEvent>
#include <QDate>
#include <QKeyEvent>
#include <QLocale>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QWindow>
#include <algorithm>
#include <cmath>

#include "host/controls/Theme.h"
#include "host/panel/LayerSurface.h"
#include "host/panel/X11Window.h"

namespace Corvella {

namespace {

constexpr int kMargin = 12;
constexpr int kHeadingHeight = 44;
constexpr int kDateSize = 16;  // As large as the title, so that no other font has to be loaded.
constexpr int kCloseSize = 24;
constexpr int kEasingMilliseconds = 150;
/// The size of the card until the widget tells its own.
constexpr QSize kFirstCard{320, 285};
/// So much of the window is to stay on the screen: all of it while no lyrics are unfolded.
constexpr int kLeastHeight = kHeadingHeight + kFirstCard.height() + kMargin;

QFont fontOfSize(int pixels) {
  QFont font;
  font.setPixelSize(pixels);
  return font;
}

}  // namespace

void Card::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  theme::fillRounded(painter, rect(), theme::kCornerRadius, theme::card());
}

TodayWindow::TodayWindow()
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      placement_(*this, kLeastHeight) {
  setWindowTitle("Corvella");
  setAttribute(Qt::WA_TranslucentBackground);
  setPalette(theme::palette());
  setUp();
  easing_.setDuration(kEasingMilliseconds);
  easing_.setEasingCurve(QEasingCurve::OutCubic);
  connect(&easing_, &QVariantAnimation::valueChanged, this,
          [this](const QVariant& height) { setCardHeight(height.toInt()); });
  connect(&placement_, &Placement::tallestChanged, this, &TodayWindow::setTallest);
  connect(&placement_, &Placement::exposedChanged, this, &TodayWindow::takeExposure);
  connect(&close_, &QPushButton::clicked, this, &QWidget::close);
  connect(&playerButton_, &PlayerButton::clicked, this, &TodayWindow::playersAsked);
  // Without this, other lyrics would appear scrolled to where those before were being read.
  connect(&panel_, &WidgetPanel::lyricsReplaced, this,
          [this] { scroll_.verticalScrollBar()->setValue(0); });
  connect(&panel_, &WidgetPanel::placeReached, this, [this](const QRect& place) {
    const auto inCard = place.translated(panel_.mapTo(&card_, QPoint()));
    scroll_.ensureVisible(inCard.center().x(), inCard.center().y(), 0, inCard.height());
  });
  card_.resize(kFirstCard);
  setCardHeight(kFirstCard.height());
}

void TodayWindow::setUp() {
  date_.setObjectName("date");
  playerButton_.setObjectName("player");
  close_.setObjectName("close");
  close_.display({.title = "\u2715", .font = nullptr, .enabled = true});
  close_.setAccessibleName("Close");
  close_.setToolTip("Close (Esc hides)");

  scroll_.setFrameShape(QFrame::NoFrame);
  scroll_.setFocusPolicy(Qt::NoFocus);
  scroll_.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll_.setWidget(&card_);
  scroll_.viewport()->setAutoFillBackground(false);
  card_.setAutoFillBackground(false);
}

void TodayWindow::place() {
  const int left = kMargin + 4;
  const int closeLeft = width() - kMargin - kCloseSize;
  constexpr int kDateTop = 4;
  constexpr int kPlayerTop = 24;
  const int room = closeLeft - left;
  const int playerWidth = std::min(playerButton_.sizeHint().width(), room);
  const auto place = [this](QWidget& widget, const QRect& area) {
    widget.setGeometry(QStyle::visualRect(layoutDirection(), rect(), area));
  };
  place(date_, {left, kDateTop, room, kPlayerTop - kDateTop});
  place(playerButton_, {left, kPlayerTop, playerWidth, PlayerButton::kHeight});
  place(close_, {closeLeft, (kHeadingHeight - kCloseSize) / 2, kCloseSize, kCloseSize});
  // The area reaches to the right edge of the window, because the scroll bar stands in the margin.
  place(scroll_, rect().adjusted(kMargin, kHeadingHeight, 0, -kMargin));
}

void TodayWindow::apply(const WidgetSnapshot& snapshot) {
  panel_.apply(snapshot);
  const auto height = static_cast<int>(std::lround(snapshot.size.height));
  card_.resize(panel_.width(), card_.height());
  // Users who want no moving pictures have turned off the animations of their desktop.
  const bool moves = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
  if (snapshot.preferredContentSize && isVisible() && eased_ && moves)
    return easeCardHeightTo(height);
  easing_.stop();
  setCardHeight(height);
}

void TodayWindow::easeCardHeightTo(int height) {
  const bool underWay = easing_.state() == QAbstractAnimation::Running;
  const auto goal = underWay ? easing_.endValue().toInt() : card_.height();
  if (goal == height) return;
  easing_.stop();
  easing_.setStartValue(card_.height());
  easing_.setEndValue(height);
  easing_.start();
}

void TodayWindow::setCardHeight(int height) {
  card_.resize(card_.width(), height);
  const auto whole = kHeadingHeight + height + kMargin;
  const bool scrolls = whole > tallest_;
  auto& bar = *scroll_.verticalScrollBar();
  if (scrolls && bar.styleSheet().isEmpty()) bar.setStyleSheet(theme::scrollBarStyleSheet());
  scroll_.setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
  setFixedSize(kMargin + card_.width() + kMargin, std::min(whole, tallest_));
  place();
}

void TodayWindow::setTallest(int height) {
  tallest_ = height;
  setCardHeight(card_.height());
}

void TodayWindow::open() {
  if (isVisible()) {
    x11::bringToCurrentDesktop(winId());
  } else {
    placement_.putWindow();
    isInLayer_ = becomeLayerSurface(*this);
  }
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
  showDate();  // Last, as it takes time that the display server can use to show the window.
}

bool TodayWindow::isInFront() const {
  return isInLayer_ || isActiveWindow() || x11::isInSight(winId());
}

void TodayWindow::showPlayer(const PlayerDescription& player) {
  // It is told each second while a track plays. Until there is something to tell, what was said of
  // the player before is as good as anything.
  if (player == player_ || !player.known) return;
  player_ = player;
  sayWhoIsPlaying();
  place();
  panel_.setPlayer(player);
}

void TodayWindow::sayWhoIsPlaying() {
  if (!player_) return playerButton_.showPlayer({});
  const auto identity = QString::fromStdString(player_->identity);
  if (player_->silent) return playerButton_.showNotice(identity + " does not answer");
  if (!player_->exists()) {
    return playerButton_.showNotice(identity.isEmpty() ? "No player is running"
                                                       : identity + " is not running");
  }
  playerButton_.showPlayer(identity);
}

QPoint TodayWindow::placeOfPlayerMenu() const {
  return playerButton_.mapToGlobal(playerButton_.rect().bottomLeft());
}

void TodayWindow::showDate() {
  const auto today = QLocale().toString(QDate::currentDate(), QLocale::LongFormat);
  if (today == date_.text()) return;
  auto font = fontOfSize(kDateSize);
  font.setBold(true);
  date_.display(today, font, theme::text());
}

void TodayWindow::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  // Nothing has been painted below, so nothing has to be blended; to blend so large an area Qt
  // would start threads.
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  constexpr double kEdge = 1;
  const QRectF whole = rect();
  theme::fillRounded(painter, whole, theme::kCornerRadius, theme::panelEdge());
  theme::fillRounded(painter, whole.adjusted(kEdge, kEdge, -kEdge, -kEdge),
                     theme::kCornerRadius - kEdge, theme::panel());
}

void TodayWindow::keyPressEvent(QKeyEvent* event) {
  if (panel_.actOnKey(*event)) return;
  if (event->key() == Qt::Key_S && event->modifiers() == Qt::NoModifier) return emit playersAsked();
  // A key that is held down repeats itself, and would hide the window again as soon as it opens.
  if (event->key() == Qt::Key_Escape && !event->isAutoRepeat()) return hide();
  scrollByKey(*event);
}

void TodayWindow::scrollByKey(const QKeyEvent& event) {
  auto& bar = *scroll_.verticalScrollBar();
  if (event.key() == Qt::Key_PageUp) bar.triggerAction(QAbstractSlider::SliderPageStepSub);
  if (event.key() == Qt::Key_PageDown) bar.triggerAction(QAbstractSlider::SliderPageStepAdd);
}

void TodayWindow::mousePressEvent(QMouseEvent* event) {
  const bool onHeading = event->position().y() < kHeadingHeight;
  if (onHeading && event->button() == Qt::LeftButton) windowHandle()->startSystemMove();
}

void TodayWindow::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  setFocus();
  if (event->spontaneous()) return comeBack();
  placement_.watch(*windowHandle());
  x11::keepOutOfTaskbar(winId());
}

void TodayWindow::comeBack() {
  showDate();
  emit restored();
}

/// Window managers on X11 take a window off the screen while another desktop is shown. On Wayland,
/// Qt says the same of a window when the compositor is merely slow to ask for its next picture.
void TodayWindow::takeExposure(bool isExposed) {
  if (!isVisible() || !x11::isUsed()) return;
  isExposed ? comeBack() : emit hidden();
}

void TodayWindow::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  if (easing_.state() == QAbstractAnimation::Running) {
    easing_.stop();
    setCardHeight(easing_.endValue().toInt());
  }
  emit hidden();
}

void TodayWindow::closeEvent(QCloseEvent* event) {
  event->accept();
  emit closeRequested();
}

}  // namespace Corvella
