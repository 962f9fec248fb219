#pragma once

#include "extension/WidgetSnapshot.h"
#include "host/controls/RangeWidget.h"

namespace Corvella {

/// How far the track has played. Its value can be read by assistive technology but is never
/// announced, for it changes every second.
class PositionBar final : public RangeWidget {
  Q_OBJECT

 public:
  explicit PositionBar(QWidget* parent) : RangeWidget(QAccessible::ProgressBar, parent) {}

  void display(const ProgressContent& content);

  double rangeValue() const override;
  double rangeMaximum() const override;
  QString valueText() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool event(QEvent* event) override;

 private:
  /// The filled part, 0..1.
  double fraction() const;

  ProgressContent content_;
};

}  // namespace Corvella
