#pragma once

#include <QKeyEvent>
#include <QScrollArea>
#include <QString>
#include <QVariantAnimation>
#include <QWidget>
#include <optional>

#include "host/controls/PushButton.h"
#include "host/controls/TextLabel.h"
#include "host/panel/Placement.h"
#include "host/panel/PlayerButton.h"
#include "host/panel/WidgetPanel.h"
#include "players/PlayerDescription.h"

namespace Corvella {

/// The rounded ground that the widget stands on.
class Card final : public QWidget {
 protected:
  void paintEvent(QPaintEvent* event) override;
};

/// Scrolls by wheel and bar. Its keys are left to the window, where Up and Down set the volume.
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

  /// Shows the window at the top right of the screen that the pointer is on, or where the user has
  /// dragged it, and raises it. A window that is on another desktop comes to the user's.
  void open();

  /// Whether the user has it before their eyes. Where the desktop does not tell what other windows
  /// cover, only the window that has the focus is sure to be seen.
  bool isInFront() const;

  /// Says in the heading who is playing, or that nobody is, and offers what that player can do.
  void showPlayer(const PlayerDescription& player);
  /// Where a list of the players belongs: below the line that says who is playing.
  QPoint placeOfPlayerMenu() const;
  /// Puts today's date into the heading.
  void showDate();
  /// Changes of height are eased unless this is off, or the user wants nothing to move.
  void setEased(bool eased) { eased_ = eased; }
  /// The window grows no taller than this, in pixels; more is scrolled.
  void setTallest(int height);

  WidgetPanel& panel() { return panel_; }

 signals:
  /// The desktop shows the window again that it had put away.
  void restored();
  /// The window has been hidden, or the desktop has put it away.
  void hidden();
  /// The user wants to choose among the players.
  void playersAsked();
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
  void sayWhoIsPlaying();
  void setCardHeight(int height);
  void easeCardHeightTo(int height);
  void scrollByKey(const QKeyEvent& event);
  void takeExposure(bool isExposed);
  void comeBack();

  TextLabel date_{this};
  PlayerButton playerButton_{this};
  PushButton close_{this, PushButton::Look::Flat};
  ScrollArea scroll_{this};
  Card card_;
  WidgetPanel panel_{&card_};
  QVariantAnimation easing_{this};
  Placement placement_;
  std::optional<PlayerDescription> player_;  // Absent until it is known for the first time.
  bool eased_ = true;
  bool isInLayer_ = false;  // Above all windows, and not to be moved; see `becomeLayerSurface`.
  int tallest_ = QWIDGETSIZE_MAX;
};

}  // namespace Corvella
