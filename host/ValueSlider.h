#pragma once

#include <QSlider>

#include "host/WidgetSnapshot.h"

namespace Corvella {

/// A horizontal slider whose thumb goes to where it is pressed. `valueChanged` tells of the user's
/// changes alone.
class ValueSlider final : public QSlider {
 public:
  explicit ValueSlider(QWidget* parent);

  void display(const SliderContent& content);

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  QRect thumb() const;
  void moveTo(double x);

  double grip_ = 0;  // Where the thumb is held, from its middle.
};

}  // namespace Corvella
