#pragma once

#include <QPainterPath>
#include <QPushButton>

#include "host/WidgetSnapshot.h"

namespace Corvella {

/// A flat button. Titles that are transport signs are painted as shapes, since fonts disagree on
/// how they look. The keyboard reaches it by Tab; a click leaves the focus where it is.
class PushButton final : public QPushButton {
 public:
  explicit PushButton(QWidget* parent);

  void display(const ButtonContent& content);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QPainterPath sign_;  // Empty when the title is painted as text.
};

}  // namespace Corvella
