#pragma once

#include <QSlider>

#include "extension/WidgetSnapshot.h"

namespace Corvella {

/// A horizontal slider of our own painting, whose thumb goes to where it is pressed. `valueChanged`
/// tells of the user's changes alone.
class ValueSlider final : public QSlider {
  Q_OBJECT

 public:
  explicit ValueSlider(QWidget* parent);

  void display(const SliderContent& content);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  QRectF thumb() const;
  void moveTo(double x);

  double grip_ = 0;  // How far right of its middle the thumb is held.
};

}  // namespace Corvella
