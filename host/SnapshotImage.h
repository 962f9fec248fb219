#pragma once

#include <QEventLoop>
#include <QImage>
#include <QObject>
#include <optional>
#include <string>

#include "host/TodayView.h"
#include "host/WidgetBridge.h"
#include "host/WidgetDisplay.h"

namespace Corvella {

/// Opens the Today view where nobody sees it and draws it into a picture.
class SnapshotImage final : public QObject {
  Q_OBJECT

 public:
  /// `bridge` is that of the view.
  SnapshotImage(TodayView& view, const WidgetBridge& bridge);

  /// Opens the view and returns once it shows what plays, or that nothing does; with `unfolded`,
  /// with the lyrics if there are any. Runs the event loop meanwhile. Throws `std::runtime_error`
  /// when the widget does not start or does not get so far in half a minute.
  void open(bool unfolded);

  /// Writes a PNG with `scale` pixels to each point. Throws `std::runtime_error` with the reason
  /// when it cannot.
  void write(const std::string& path, double scale);

  /// What the view shows.
  const WidgetDisplay& display() const { return display_; }

 private:
  QImage draw(double scale);
  void look();
  bool isComplete();
  bool hasUnfolded();

  TodayView& view_;
  QEventLoop loop_;
  WidgetDisplay display_;
  std::optional<NCUpdateResult> report_;
  std::optional<QString> failure_;
  bool unfolds_ = false;
  bool clicked_ = false;
};

}  // namespace Corvella
