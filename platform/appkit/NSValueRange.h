#pragma once

/// The lowest and the highest value that a control shows. Both are finite, and so is their
/// distance: larger ends become the largest for which that holds.
class NSValueRange {
 public:
  NSValueRange(double minValue, double maxValue);

  double minValue() const { return minValue_; }
  double maxValue() const { return maxValue_; }
  /// NaN leaves the end as it was. Gives whether the end changed.
  bool setMinValue(double value) { return set(minValue_, value); }
  bool setMaxValue(double value) { return set(maxValue_, value); }

  /// The value of the range that is nearest to `value`; the lowest one for NaN, and for every value
  /// where the ends are the wrong way round.
  double clamped(double value) const;

 private:
  static bool set(double& end, double value);

  double minValue_ = 0;
  double maxValue_ = 0;
};
