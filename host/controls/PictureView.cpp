#include "host/controls/PictureView.h"

#include <QPainter>
#include <QPainterPath>

namespace Corvella {

namespace {

constexpr double kCornerRadius = 6;

/// An image that uses the picture's own pixels, and so must not outlive the picture.
QImage imageOf(const NSImage& picture) {
  const auto& bitmap = picture.bitmap();
  // Qt takes pixels as a pointer to bytes.
  return {reinterpret_cast<const uchar*>(bitmap.pixels.data()), bitmap.pixelsWide,
          bitmap.pixelsHigh, 4 * static_cast<qsizetype>(bitmap.pixelsWide),
          QImage::Format_ARGB32_Premultiplied};
}

/// Makes the corners of an image transparent. It is done once to the scaled image, because painting
/// through a rounded shape each time takes longer and makes Qt start threads.
void roundCorners(QImage& image, double radius) {
  QPainterPath corners;
  corners.addRect(image.rect());
  corners.addRoundedRect(image.rect(), radius, radius);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
  painter.fillPath(corners, Qt::black);
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
  // The widget's own pixel ratio is that of its screen, and wrong when it is drawn into an image.
  const auto ratio = painter.deviceTransform().m11();
  const auto pixels = (place.size() * ratio).toSize().expandedTo(QSize(1, 1));
  if (scaled_.size() != pixels) {
    scaled_ = imageOf(*image_).scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    roundCorners(scaled_, kCornerRadius * ratio);
    scaled_.setDevicePixelRatio(ratio);
  }
  painter.drawImage(place.topLeft(), scaled_);
}

}  // namespace Corvella
