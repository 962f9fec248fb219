#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "extension/WidgetDisplay.h"
#include "host/panel/PageTurner.h"
#include "host/panel/PlayerMenu.h"
#include "host/panel/TodayWindow.h"
#include "host/panel/WidgetBridge.h"
#include "host/panel/WidgetSession.h"

namespace Corvella {

/// The Today view: a window, and behind it the widget at work on a player. Showing the window is
/// the widget's appearance, hiding it its disappearance. While it is shown, news of the player have
/// the widget read everything anew; when the player leaves, the widget is ended with it, and a new
/// one starts.
///
/// Lives on the GUI thread, and waits at its end for the script that is running.
class TodayView final : public QObject {
  Q_OBJECT

 public:
  /// Starts the widget on a player; what `start` refers to outlives the view. Throws what `start`
  /// throws.
  TodayView(StartWidget start, const std::string& player);
  ~TodayView() override;
  TodayView(const TodayView&) = delete;
  TodayView& operator=(const TodayView&) = delete;

  void open();
  void hide();
  /// Hides the window that is in front, and shows or raises any other.
  void toggle();

  /// Ends the widget and starts it anew on another player.
  void showPlayer(const std::string& player);

  /// The players to choose from. Asks none of them.
  PlayerList players() const;
  /// Has the player bring up its window.
  void raisePlayer() const;

  /// Has `settled` emitted once the widget has dealt with all that came before.
  void settle();

  /// Made by the first use.
  TodayWindow& window();
  /// As `titleChanged` has told it last.
  const QString& title() const { return title_; }
  /// What the widget shows.
  const WidgetDisplay& display() const { return display_; }
  /// See `WidgetSession`.
  std::string whyPlayerIsNotShown() const { return run_->session->whyPlayerIsNotShown(); }

 signals:
  void appeared();
  void disappeared();
  /// The line that says what is playing has changed; empty while the view is hidden, when nobody
  /// looks at the player.
  void titleChanged(const QString& title);
  /// The user has asked to end the window, not just to put it away.
  void closeRequested();
  /// The widget has settled, and what it shows has been handed to the window.
  void settled();
  /// The widget could not be started, with the reason; it does nothing more.
  void failed(const QString& reason);

 private:
  /// One run of the widget, and what it tells the GUI thread.
  struct Run {
    WidgetBridge bridge;
    std::unique_ptr<WidgetSession> session;
    std::future<void> end;
  };

  std::unique_ptr<Run> startRun(const std::string& player);
  void adopt(std::unique_ptr<Run> run, const std::string& player);
  void replaceRun(std::unique_ptr<Run> run, const std::string& player);
  void endLater(std::unique_ptr<Run> run);
  void connectWindow();
  void connectRunToWindow();
  void startAnew();
  void appear();
  void begin();
  void disappear();
  void hear(PlayerNews news);
  void show(const WidgetSnapshot& snapshot);
  void setTitle(const QString& title);
  void describePlayer();
  /// Has the widget disappear while its player does not answer, and appear again afterwards.
  void restWhile(bool playerIsSilent);
  void showPlayerMenu();
  ExtensionThread& extension() const { return run_->session->extension(); }

  const StartWidget start_;
  std::string choice_;  // Of the user: "auto" or a player's name.
  std::unique_ptr<Run> run_;
  std::vector<std::unique_ptr<Run>> endingRuns_;
  std::unique_ptr<TodayWindow> window_;
  WidgetDisplay display_;
  QString title_;
  PageTurner pages_{this};
  QTimer everyMinute_{this};
  std::unique_ptr<PlayerMenu> menu_;
  bool open_ = false;  // Whether the widget is on the screen, and not put away by the desktop.
  bool playerHasLeft_ = false;
  bool rests_ = false;  // Whether the widget has disappeared though the window is open.
};

}  // namespace Corvella
