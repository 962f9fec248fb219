#pragma once

#include <QObject>
#include <QString>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "extension/WidgetHost.h"
#include "players/PlayerNews.h"

namespace Corvella {

/// Carries what the widget does, and the news of its player, from their threads to the GUI thread.
/// What the GUI thread has not seen yet is merged, so that at most one event of this bridge waits
/// there.
///
/// Lives on the GUI thread, and must outlive the extension.
class WidgetBridge final : public QObject, public WidgetHost, public PlayerNewsListener {
  Q_OBJECT

 public:
  void displayChanged(WidgetSnapshot snapshot) override;
  void answered(std::uint64_t number) override;
  void settled(std::uint64_t number) override;
  void startFailed(const std::string& reason) override;
  void playerNews(PlayerNews news) override;
  bool isListening() const override { return listening_; }

  /// Whether news other than that the player has left are carried; at first they are not.
  void setListening(bool listening) { listening_ = listening; }

 signals:
  /// These are emitted on the GUI thread, the display's change first.
  void displayShown(const Corvella::WidgetSnapshot& snapshot);
  void pingAnswered(quint64 number);
  void hasSettled();
  void failed(const QString& reason);
  void playerHasNews(Corvella::PlayerNews news);

 private:
  struct Changes {
    std::optional<WidgetSnapshot> snapshot;
    std::optional<std::uint64_t> answer;
    bool settled = false;
    std::optional<std::string> failure;
    std::set<PlayerNews> news;
  };

  template <typename Change>
  void post(Change change);
  Q_INVOKABLE void deliver();

  std::atomic<bool> listening_ = false;
  std::mutex mutex_;
  Changes changes_;      // Guarded by the mutex.
  bool posted_ = false;  // Guarded by the mutex: whether `deliver` waits in the event loop.
};

}  // namespace Corvella
