#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>

namespace Corvella {

/// Says when to turn a page, that is, when the widget is to disappear and appear again because its
/// player has news, so that it reads everything anew. News that come close together cause one page,
/// and there are never more than four pages a second. GUI thread.
class PageTurner final : public QObject {
  Q_OBJECT

 public:
  /// For how long the news of a player that plays are gathered, which send their signals at once,
  /// and those of one that has stopped. Several players stop for a moment between two tracks, and
  /// that moment should not be seen.
  static constexpr std::chrono::milliseconds kBurst{2};
  static constexpr std::chrono::milliseconds kPause{50};
  /// The least time from one page to the next.
  static constexpr std::chrono::milliseconds kBetweenPages{250};
  /// How long after a command its effect is looked at when the player has no news by itself.
  static constexpr std::chrono::milliseconds kAfterCommand{1000};

  explicit PageTurner(QObject* parent);

  /// The player has changed.
  void turnNow() { turnAfter(kBurst); }
  /// The player has changed and does not play.
  void turnSoon() { turnAfter(kPause); }
  /// The player has been told to do something. Most players have news of it themselves, and the
  /// page for these comes first and is enough; some agree and do nothing.
  void turnLater();
  /// Forgets all news.
  void stop() { timer_.stop(); }

 signals:
  void pageIsDue();

 private:
  void turnAfter(std::chrono::milliseconds gathering);
  void turnIn(std::chrono::milliseconds delay);

  QTimer timer_{this};
  std::chrono::steady_clock::time_point lastPage_;
};

}  // namespace Corvella
