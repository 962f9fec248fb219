#pragma once

#include <QPainterPath>
#include <QPushButton>

#include "extension/WidgetSnapshot.h"

namespace Corvella {

/// A button, which shows signs as shapes of our own: those of the fonts differ in size and place.
/// Reached by Tab, not by clicking, so that keys keep their meaning after a click.
class PushButton final : public QPushButton {
  Q_OBJECT

 public:
  /// A flat one is no more than its title until the pointer is on it.
  enum class Look : std::uint8_t { Raised, Flat };

  explicit PushButton(QWidget* parent, Look look = Look::Raised);

  void display(const ButtonContent& content);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QColor backgroundColor() const;

  const Look look_;
  QString title_;
  QPainterPath sign_;
};

}  // namespace Corvella
