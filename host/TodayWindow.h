#pragma once

#include <QKeyEvent>
#include <QScrollArea>
#include <QString>
#include <QVariantAnimation>
#include <QWidget>

#include "host/PushButton.h"
#include "host/TextLabel.h"
#include "host/WidgetPanel.h"

namespace Corvella {

/// What lies behind the widget.
class Card final : public QWidget {
 protected:
  void paintEvent(QPaintEvent* event) override;
};

/// Scrolls by wheel and bar. Keys are left to the window, which gives them a meaning.
class ScrollArea final : public QScrollArea {
 public:
  using QScrollArea::QScrollArea;

 protected:
  void keyPressEvent(QKeyEvent* event) override { event->ignore(); }
};

/// The panel on the desktop: a heading, and below it the widget in a card that is as tall as the
/// widget asks for and scrolls where the screen ends.
class TodayWindow final : public QWidget {
  Q_OBJECT

 public:
  TodayWindow();

  /// Follows the widget's display; grows or shrinks to the size that it asks for.
  void apply(const WidgetSnapshot& snapshot);

  /// Shows the window at the top right of the screen that the pointer is on, and raises it.
  void open();

  /// A quiet line in the heading; none when empty.
  void setNotice(const QString& notice);
  /// Puts today's date into the heading.
  void showDate();
  /// Changes of height are eased unless this is off.
  void setEased(bool eased) { eased_ = eased; }
  /// The window grows no taller than this, in pixels; more is scrolled.
  void setTallest(int height);

  WidgetPanel& panel() { return panel_; }

 signals:
  /// The desktop shows the window again that it had put away.
  void restored();
  void hidden();
  /// The user has asked to end the window, not just to put it away.
  void closeRequested();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void setUp();
  void place();
  void setCardHeight(int height);
  void easeCardHeightTo(int height);
  void scrollByKey(const QKeyEvent& event);

  TextLabel date_{this};
  TextLabel notice_{this};
  PushButton close_{this, PushButton::Look::Flat};
  ScrollArea scroll_{this};
  Card card_;
  WidgetPanel panel_{&card_};
  QVariantAnimation easing_;
  bool eased_ = true;
  int tallest_ = QWIDGETSIZE_MAX;
};

}  // namespace Corvella
