#pragma once

#include <optional>

#include "extension/WidgetSnapshot.h"
#include "host/controls/RangeWidget.h"

namespace Corvella {

/// A row of stars. A click or a drag sets as many as lie before the pointer, none left of the
/// first; so do the arrow keys. Under the pointer it previews what a click would set.
class StarRating final : public RangeWidget {
  Q_OBJECT

 public:
  explicit StarRating(QWidget* parent);

  void display(const RatingContent& content);

  int stars() const { return content_.stars; }
  /// Whether the user holds the stars with the mouse.
  bool isDown() const { return down_; }
  /// The user sets the rating; nothing when it cannot be set.
  void choose(int stars);

  double rangeValue() const override { return content_.stars; }
  double rangeMaximum() const override { return content_.mostStars; }
  QString valueText() const override;
  void acceptValue(double value) override;

 signals:
  /// By the user.
  void starsChosen(int stars);
  void released();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void letGo();
  int starsAt(double x) const;
  int starsForKey(const QKeyEvent& event) const;
  void setPreview(std::optional<int> stars);
  /// The user holds the mouse over as many stars: they are set at once, or, where the widget only
  /// wants to hear of the end, shown until the mouse is let go.
  void holdAt(int stars);

  RatingContent content_;
  std::optional<int> preview_;
  bool down_ = false;
};

}  // namespace Corvella
