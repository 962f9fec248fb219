#include "host/controls/StarRating.h"

#include <QAccessibleValueChangeEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "host/controls/Theme.h"

namespace Corvella {

namespace {

/// A star with its middle at the origin and its points on a circle of radius 1.
QPainterPath starPath() {
  constexpr int kCorners = 10;
  constexpr double kInnerRadius = 0.45;
  QPolygonF corners;
  for (int i = 0; i < kCorners; ++i) {
    const auto angle = std::numbers::pi * (2.0 * i / kCorners - 0.5);
    const auto radius = i % 2 == 0 ? 1 : kInnerRadius;
    corners << QPointF(radius * std::cos(angle), radius * std::sin(angle));
  }
  QPainterPath path;
  path.addPolygon(corners);
  path.closeSubpath();
  return path;
}

QColor starColor(bool lit, bool enabled, bool preview, bool highlighted) {
  if (!enabled) return lit ? theme::faintText() : theme::faintGroove();
  if (!lit) return theme::groove();
  if (preview) return theme::starPreview();
  return highlighted ? theme::star() : theme::dimmed();
}

}  // namespace

StarRating::StarRating(QWidget* parent) : RangeWidget(QAccessible::Slider, parent) {
  setMouseTracking(true);
}

void StarRating::display(const RatingContent& content) {
  const bool changed = content.stars != content_.stars;
  content_ = content;
  setFocusPolicy(content.editable ? Qt::TabFocus : Qt::NoFocus);
  setCursor(content.editable ? Qt::PointingHandCursor : Qt::ArrowCursor);
  if (!content.editable) preview_.reset();
  update();
  if (changed && isVisible()) {
    QAccessibleValueChangeEvent event(this, content.stars);
    QAccessible::updateAccessibility(&event);
  }
}

void StarRating::choose(int stars) {
  stars = std::clamp(stars, 0, content_.mostStars);
  if (!content_.editable || stars == content_.stars) return;
  auto chosen = content_;
  chosen.stars = stars;
  display(chosen);
  emit starsChosen(stars);
}

QString StarRating::valueText() const {
  return QString("%1 of %2 stars").arg(content_.stars).arg(content_.mostStars);
}

void StarRating::acceptValue(double value) {
  if (std::isfinite(value)) choose(static_cast<int>(std::lround(std::clamp(value, 0.0, 1000.0))));
}

void StarRating::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  const auto star = starPath();
  const auto pitch = content_.mostStars > 0 ? 1.0 * width() / content_.mostStars : 0;
  const auto radius = std::min(pitch, 1.0 * height()) * 0.42;
  const auto lit = preview_.value_or(content_.stars);
  for (int i = 0; i < content_.mostStars; ++i) {
    painter.save();
    painter.translate(pitch * (i + 0.5), height() / 2.0 + radius * 0.05);
    painter.scale(radius, radius);
    painter.setBrush(starColor(i < lit, isEnabled(), preview_ && !down_, content_.highlighted));
    painter.drawPath(star);
    painter.restore();
  }
  if (hasFocus() && content_.focusRing) theme::paintFocusRing(painter, rect());
}

void StarRating::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !content_.editable) return event->ignore();
  down_ = true;
  setPreview(std::nullopt);
  holdAt(starsAt(event->position().x()));
}

void StarRating::mouseMoveEvent(QMouseEvent* event) {
  if (!content_.editable) return;
  const auto stars = starsAt(event->position().x());
  down_ ? holdAt(stars) : setPreview(stars);
}

void StarRating::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !down_) return event->ignore();
  down_ = false;
  if (preview_) choose(*preview_);
  setPreview(std::nullopt);
  emit released();
}

void StarRating::holdAt(int stars) {
  content_.continuous ? choose(stars) : setPreview(stars);
}

void StarRating::leaveEvent(QEvent* /*event*/) {
  if (!down_) setPreview(std::nullopt);
}

void StarRating::hideEvent(QHideEvent* event) {
  RangeWidget::hideEvent(event);
  letGo();
}

void StarRating::changeEvent(QEvent* event) {
  RangeWidget::changeEvent(event);
  if (event->type() == QEvent::EnabledChange && !isEnabled()) letGo();
}

/// A control that is hidden or disabled under the user's finger hears of no release.
void StarRating::letGo() {
  setPreview(std::nullopt);
  if (std::exchange(down_, false)) emit released();
}

void StarRating::keyPressEvent(QKeyEvent* event) {
  const auto stars = starsForKey(*event);
  if (stars < 0) return RangeWidget::keyPressEvent(event);
  choose(stars);
}

/// The stars that a key asks for, -1 for any other key.
int StarRating::starsForKey(const QKeyEvent& event) const {
  switch (event.key()) {
    case Qt::Key_Right:
      return std::min(content_.stars + 1, content_.mostStars);
    case Qt::Key_Left:
      return std::max(content_.stars - 1, 0);
    case Qt::Key_Home:
      return 0;
    case Qt::Key_End:
      return content_.mostStars;
    default:
      return -1;
  }
}

int StarRating::starsAt(double x) const {
  // Without some room for none, a rating could not be taken away with the mouse.
  constexpr double kNone = 4;
  if (x < kNone || content_.mostStars <= 0) return 0;
  const auto stars = std::ceil(x * content_.mostStars / width());
  return static_cast<int>(std::clamp(stars, 0.0, 1.0 * content_.mostStars));
}

void StarRating::setPreview(std::optional<int> stars) {
  if (preview_ == stars) return;
  preview_ = stars;
  update();
}

}  // namespace Corvella
