#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/FileLock.h"
#include "host/LocalSocket.h"

namespace Corvella {

/// Sees to it that a user has one Corvella: the first one is told what later ones are started for.
///
/// GUI thread. The first one's place is kept by a lock file in the user's runtime folder, and goes
/// with its process, however that ends; a socket beside it takes the messages.
class SingleInstance final : public QObject {
  Q_OBJECT

 public:
  enum class Message : std::uint8_t { Open, Toggle };

  /// Uses `folder`, which exists and is the user's own.
  explicit SingleInstance(const QString& folder);
  ~SingleInstance() override;
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  /// Takes the first one's place if it is free; messages then wait for `listen`. False when it is
  /// taken. Throws `std::runtime_error` when the folder cannot be used. Needs no
  /// `QCoreApplication`.
  bool becomeFirst();
  /// From now on `told` is emitted on this thread, which has an event loop. The first one's.
  void listen();

  /// Tells the first one. Waits until it has read the message, at most a few seconds; false when it
  /// does not. Needs no `QCoreApplication`.
  bool tellFirst(Message message) const;

 signals:
  void told(Corvella::SingleInstance::Message message);

 private:
  void read();

  const std::string lockPath_;
  const std::string socketPath_;
  std::optional<FileLock> lock_;
  std::optional<LocalSocket> socket_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace Corvella
