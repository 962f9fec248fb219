#include "host/TodayWindow.h"

#include <QCloseEvent>
#include <QCursor>
#include <QDate>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QWindow>
#include <algorithm>
#include <cmath>

#include "host/Theme.h"

namespace Corvella {

namespace {

constexpr int kMargin = 12;
constexpr int kHeadingHeight = 44;
constexpr int kNoticeHeight = 16;
constexpr int kNoticeSize = 12;
constexpr int kDateSize = 16;  // That of the title, whose font is loaded anyway.
constexpr int kCloseSize = 24;
constexpr int kScreenMargin = 8;
constexpr int kEasingMilliseconds = 150;
/// The card until the widget tells how large it is.
constexpr QSize kFirstCard{320, 285};

QScreen* screenUnderPointer() {
  auto* const primary = QGuiApplication::primaryScreen();
  if (QGuiApplication::screens().size() == 1) return primary;  // The display server is not asked.
  auto* const screen = QGuiApplication::screenAt(QCursor::pos());
  return screen != nullptr ? screen : primary;
}

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

TodayWindow::TodayWindow() : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint) {
  setWindowTitle("Corvella");
  setAttribute(Qt::WA_TranslucentBackground);
  setPalette(theme::palette());
  setUp();
  easing_.setDuration(kEasingMilliseconds);
  easing_.setEasingCurve(QEasingCurve::OutCubic);
  connect(&easing_, &QVariantAnimation::valueChanged, this,
          [this](const QVariant& height) { setCardHeight(height.toInt()); });
  connect(&close_, &QPushButton::clicked, this, &QWidget::close);
  card_.resize(kFirstCard);
  setCardHeight(kFirstCard.height());
}

void TodayWindow::setUp() {
  date_.setObjectName("date");
  notice_.setObjectName("notice");
  notice_.hide();
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
  constexpr int kDateTop = 4;  // With the notice below.
  constexpr int kNoticeTop = 24;
  const QRect heading(left, 0, closeLeft - left, kHeadingHeight);
  const QRect aboveNotice(left, kDateTop, heading.width(), kNoticeTop - kDateTop);
  date_.setGeometry(notice_.isHidden() ? heading : aboveNotice);
  notice_.setGeometry(left, kNoticeTop, heading.width(), kNoticeHeight);
  close_.setGeometry(closeLeft, (kHeadingHeight - kCloseSize) / 2, kCloseSize, kCloseSize);
  // The margin on the right belongs to the scroll bar.
  scroll_.setGeometry(rect().adjusted(kMargin, kHeadingHeight, 0, -kMargin));
}

void TodayWindow::apply(const WidgetSnapshot& snapshot) {
  panel_.apply(snapshot);
  const auto height = static_cast<int>(std::lround(snapshot.size.height));
  card_.resize(panel_.width(), card_.height());
  if (snapshot.preferredContentSize && isVisible() && eased_) return easeCardHeightTo(height);
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
  const auto free = screenUnderPointer()->availableGeometry();
  setTallest(free.height() - 2 * kScreenMargin);
  if (!isVisible()) {
    move(free.right() + 1 - kScreenMargin - width(), free.top() + kScreenMargin);
  }
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
  showDate();  // The display server makes room meanwhile.
}

void TodayWindow::setNotice(const QString& notice) {
  if (notice == notice_.text()) return;
  notice_.display(notice, fontOfSize(kNoticeSize), theme::notice());
  notice_.setVisible(!notice.isEmpty());
  place();
}

void TodayWindow::showDate() {
  const auto today = QLocale().toString(QDate::currentDate(), "dddd, d MMMM");
  if (today == date_.text()) return;
  auto font = fontOfSize(kDateSize);
  font.setBold(true);
  date_.display(today, font, theme::text());
}

void TodayWindow::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  // Nothing is below. Qt would start threads to blend so large an area.
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  constexpr double kEdge = 1;
  const QRectF whole = rect();
  theme::fillRounded(painter, whole, theme::kCornerRadius, theme::panelEdge());
  theme::fillRounded(painter, whole.adjusted(kEdge, kEdge, -kEdge, -kEdge),
                     theme::kCornerRadius - kEdge, theme::panel());
}

void TodayWindow::keyPressEvent(QKeyEvent* event) {
  if (panel_.actOnKey(*event)) return;
  // Held down, it does not hide a window that is opened meanwhile.
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
  if (!event->spontaneous()) return;
  showDate();
  emit restored();
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
