#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <optional>

#include "host/AnswerWatch.h"
#include "host/ExtensionThread.h"
#include "host/TodayWindow.h"
#include "host/WidgetBridge.h"

namespace Corvella {

/// The Today view: a window, and behind it the extension on its thread. Showing the window is the
/// widget's appearance, hiding it its disappearance.
///
/// Lives on the GUI thread, and waits for nothing but, at its end, the script that is running.
class TodayView final : public QObject {
  Q_OBJECT

 public:
  /// `player` is what a silent player is called. The services and the bridge outlive the view.
  TodayView(const HostServices& services, WidgetBridge& bridge, const QString& player);
  ~TodayView() override;
  TodayView(const TodayView&) = delete;
  TodayView& operator=(const TodayView&) = delete;

  void open();
  void hide();
  void toggle();

  /// Whether the widget is on the screen: shown, and not put away by the desktop.
  bool isOpen() const { return open_; }
  /// Made by the first use.
  TodayWindow& window();

 signals:
  void appeared();
  void disappeared();
  /// The user has asked to end the window, not just to put it away.
  void closeRequested();

 private:
  void connectWindow();
  void appear();
  void disappear();
  void beat();
  bool isSilent() const;

  const QString player_;
  WidgetBridge& bridge_;
  AnswerWatch watch_;
  ExtensionThread extension_;
  std::unique_ptr<TodayWindow> window_;
  QTimer heartbeat_;
  bool open_ = false;
  std::optional<NCUpdateResult> report_;
  int beatsSinceAppearance_ = 0;
  bool silent_ = false;  // At the last beat.
};

}  // namespace Corvella
