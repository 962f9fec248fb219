#pragma once

#include <QSlider>

#include "extension/WidgetSnapshot.h"

namespace Corvella {

/// A horizontal slider of our own painting, whose thumb goes to where it is pressed. `valueChanged`
/// tells of the user's changes alone. A step by key, wheel or assistive technology is not taken at
/// once, but asked for: what it starts from may be out of date.
class ValueSlider final : public QSlider {
  Q_OBJECT

 public:
  explicit ValueSlider(QWidget* parent);

  void display(const SliderContent& content);

 signals:
  /// The user wants the value to be so much higher, or lower when it is negative.
  void stepWanted(int change);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void askForStep(int action);
  QRectF thumb() const;
  void moveTo(double x);

  void letGo();

  bool letsGo_ = false;  // A value that waited for the end of a drag is set just now.
  double grip_ = 0;      // How far right of its middle the thumb is held.
};

}  // namespace Corvella
