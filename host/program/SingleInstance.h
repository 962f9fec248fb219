#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantList>

namespace Corvella {

/// Sees to it that a user has one Corvella: the first one owns the name org.corvella.Corvella on
/// the session bus, and later ones tell it what they were started for. Anybody on the bus may call
/// the methods of the interface org.corvella.Corvella at /org/corvella/Corvella.
///
/// GUI thread. The name goes with the process, however that ends.
class SingleInstance final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.corvella.Corvella")

 public:
  enum class Role {
    First,
    Later,  ///< Another instance has the name.
    Alone,  ///< There is no session bus, so instances do not know of each other.
  };

  /// Needs a `QCoreApplication`.
  explicit SingleInstance(QDBusConnection bus = QDBusConnection::sessionBus());

  /// Takes the name if it is free; calls are answered from then on, once an event loop runs. Where
  /// the bus is missing or ends, the name is taken as soon as there is a bus again; if another
  /// instance has it by then, `quitAsked` is emitted.
  Role claimName();

  /// Whether another instance has the name. Takes nothing.
  bool isThereAFirst() const;

  /// Calls a method of the first instance and waits for its answer, for a few seconds at most;
  /// false when there is none.
  bool tellFirst(const QString& method, const QVariantList& arguments = {}) const;

  // What others call over the bus.

  /// Opens the Today view, or raises it.
  Q_SCRIPTABLE Q_INVOKABLE void Open() { emit openAsked(); }
  /// Opens the Today view, or hides it.
  Q_SCRIPTABLE Q_INVOKABLE void Toggle() { emit toggleAsked(); }
  /// Shows another player; `player` is what `--player` takes.
  Q_SCRIPTABLE Q_INVOKABLE void ShowPlayer(const QString& player) { emit playerAsked(player); }
  /// Ends the program.
  Q_SCRIPTABLE Q_INVOKABLE void Quit() { emit quitAsked(); }

 signals:
  void openAsked();
  void toggleAsked();
  void playerAsked(const QString& player);
  void quitAsked();
  /// The bus has ended, and with it everything that the program offered there.
  void busLost();
  /// There is a bus again, and this instance has the name.
  void busFound();

 private:
  Q_SLOT void loseBus();
  void awaitBus() { nextLook_.start(); }
  void lookForBus();

  QDBusConnection bus_;
  QTimer nextLook_;
};

}  // namespace Corvella
