#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
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

  TodayWindow& window() { return window_; }

 private:
  void connectWindow();
  void appear();
  void disappear();
  void beat();
  bool isSilent() const;

  const QString player_;
  AnswerWatch watch_;
  TodayWindow window_;
  QTimer heartbeat_;
  std::optional<NCUpdateResult> report_;
  int beatsSinceAppearance_ = 0;
  ExtensionThread extension_;  // Last: until it ends it uses the watch.
};

}  // namespace Corvella
