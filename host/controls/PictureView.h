#pragma once

#include <QImage>
#include <QWidget>
#include <memory>

#include "extension/WidgetSnapshot.h"

namespace Corvella {

/// A picture, as large as fits, with rounded corners. Sharp on every screen: it is scaled once to
/// the pixels that the screen has for it.
class PictureView final : public QWidget {
  Q_OBJECT

 public:
  using QWidget::QWidget;

  void display(const ImageContent& content);

  /// The part of the widget that the picture fills.
  QRectF pictureRect() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  std::shared_ptr<const NSImage> image_;
  QImage scaled_;
};

}  // namespace Corvella
