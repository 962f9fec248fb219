#include "host/PictureView.h"

#include <QPainter>
#include <QPainterPath>

namespace Corvella {

namespace {

constexpr double kCornerRadius = 6;

/// The picture's own pixels, not copied.
QImage imageOf(const NSImage& picture) {
  const auto& bitmap = picture.bitmap();
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): Qt's pixels are bytes.
  return {reinterpret_cast<const uchar*>(bitmap.pixels.data()), bitmap.pixelsWide,
          bitmap.pixelsHigh, 4 * static_cast<qsizetype>(bitmap.pixelsWide),
          QImage::Format_ARGB32_Premultiplied};
}

bool isEmpty(const NSImage* picture) {
  return picture == nullptr || picture->bitmap().pixels.empty();
}

}  // namespace

void PictureView::display(const ImageContent& content) {
  if (content.image == image_) return;
  image_ = content.image;
  scaled_ = {};
  update();
}

QRectF PictureView::pictureRect() const {
  if (isEmpty(image_.get())) return {};
  const auto size =
      QSizeF(image_->width(), image_->height()).scaled(this->size(), Qt::KeepAspectRatio);
  QRectF place({}, size);
  place.moveCenter(QRectF(rect()).center());
  return place;
}

void PictureView::paintEvent(QPaintEvent* /*event*/) {
  const auto place = pictureRect();
  if (place.isEmpty()) return;
  QPainter painter(this);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  const auto ratio = painter.device()->devicePixelRatioF();
  const auto& image = scaledTo((place.size() * ratio).toSize().expandedTo(QSize(1, 1)));
  QBrush brush(image);
  brush.setTransform(QTransform::fromTranslate(place.x(), place.y())
                         .scale(place.width() / image.width(), place.height() / image.height()));
  painter.setPen(Qt::NoPen);
  painter.setBrush(brush);
  painter.drawRoundedRect(place, kCornerRadius, kCornerRadius);
}

const QImage& PictureView::scaledTo(QSize pixels) {
  if (scaled_.size() != pixels) {
    scaled_ = imageOf(*image_).scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  }
  return scaled_;
}

}  // namespace Corvella
