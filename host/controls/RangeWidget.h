#pragma once

#include <QAccessible>
#include <QString>
#include <QWidget>

namespace Corvella {

/// A control of our own painting that shows one value between zero and a maximum, and tells
/// assistive technology so.
class RangeWidget : public QWidget {
 public:
  RangeWidget(QAccessible::Role role, QWidget* parent) : QWidget(parent), role_(role) {}

  virtual double rangeValue() const = 0;
  virtual double rangeMaximum() const = 0;
  /// The value in words.
  virtual QString valueText() const = 0;
  /// A value that the user sets by assistive technology.
  virtual void acceptValue(double /*value*/) {}

  QAccessible::Role role() const { return role_; }

 private:
  const QAccessible::Role role_;
};

}  // namespace Corvella
