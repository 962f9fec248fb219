#pragma once

#include <QObject>
#include <QString>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "host/WidgetHost.h"

namespace Corvella {

/// Carries what the widget does from its thread to the GUI thread. What the GUI thread has not seen
/// yet is merged, so that at most one event of this bridge waits there.
///
/// Lives on the GUI thread, and must outlive the extension.
class WidgetBridge final : public QObject, public WidgetHost {
  Q_OBJECT

 public:
  void displayChanged(WidgetSnapshot snapshot) override;
  void updateReported(NCUpdateResult result) override;
  void answered(std::uint64_t number) override;
  void startFailed(const std::string& reason) override;

 signals:
  /// These are emitted on the GUI thread, the display's change first.
  void displayShown(const Corvella::WidgetSnapshot& snapshot);
  void reported(NCUpdateResult result);
  void pingAnswered(quint64 number);
  void failed(const QString& reason);

 private:
  struct News {
    std::optional<WidgetSnapshot> snapshot;
    std::optional<NCUpdateResult> report;
    std::optional<std::uint64_t> answer;
    std::optional<std::string> failure;
  };

  template <typename Change>
  void post(Change change);
  Q_INVOKABLE void deliver();

  std::mutex mutex_;
  News news_;            // Under the lock.
  bool posted_ = false;  // Under the lock.
};

}  // namespace Corvella
