#include "host/program/SingleInstance.h"

#include <QByteArray>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QUrl>
#include <chrono>
#include <utility>

#include "players/mpris/bus/SessionBus.h"

namespace Corvella {

namespace {

/// The name on the bus, and that of the interface.
constexpr auto kName = "org.corvella.Corvella";
constexpr auto kPath = "/org/corvella/Corvella";
constexpr int kPatienceInMilliseconds = 3000;
/// Between two looks for a bus that is missing.
constexpr std::chrono::seconds kBetweenLooks{2};
/// For the answer of a bus that has come back. The window stands still meanwhile.
constexpr std::chrono::milliseconds kGreeting{20};

/// Where sd-bus looks for the session bus, too. Qt remembers where it was at the start.
QString sessionBusAddress() {
  auto address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
  if (!address.isEmpty()) return address;
  const auto folder = QUrl::toPercentEncoding(qEnvironmentVariable("XDG_RUNTIME_DIR"), "/");
  return "unix:path=" + QString::fromLatin1(folder) + "/bus";
}

}  // namespace

SingleInstance::SingleInstance(QDBusConnection bus) : bus_(std::move(bus)) {
  nextLook_.setInterval(kBetweenLooks);
  nextLook_.callOnTimeout(this, &SingleInstance::lookForBus);
}

SingleInstance::Role SingleInstance::claimName() {
  if (!bus_.isConnected()) {
    awaitBus();
    return Role::Alone;
  }
  bus_.connect({}, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected",
               this, SLOT(loseBus()));
  // The object is registered first, because another instance that finds the name may call it at
  // once.
  bus_.registerObject(kPath, this, QDBusConnection::ExportScriptableInvokables);
  const auto reply =
      bus_.interface()->registerService(kName, QDBusConnectionInterface::DontQueueService);
  if (!reply.isValid()) {
    awaitBus();
    return Role::Alone;
  }
  return reply == QDBusConnectionInterface::ServiceRegistered ? Role::First : Role::Later;
}

void SingleInstance::loseBus() {
  awaitBus();
  emit busLost();
}

void SingleInstance::lookForBus() {
  // Qt would wait without a limit for a bus that does not answer.
  if (!sessionBusAnswers(kGreeting)) return;
  nextLook_.stop();
  // Qt keeps its connections by their names, also those that have ended.
  const QString name = "corvella";
  QDBusConnection::disconnectFromBus(name);
  bus_ = QDBusConnection::connectToBus(sessionBusAddress(), name);
  // Another instance may have been started meanwhile. Of two the users could tell only one to end.
  const auto role = claimName();
  if (role == Role::Later) emit quitAsked();
  if (role == Role::First) emit busFound();
}

bool SingleInstance::isThereAFirst() const {
  return bus_.isConnected() && bus_.interface()->isServiceRegistered(kName);
}

bool SingleInstance::tellFirst(const QString& method, const QVariantList& arguments) const {
  auto call = QDBusMessage::createMethodCall(kName, kPath, kName, method);
  call.setArguments(arguments);
  // If the first instance ends just now, the bus must not start it again to deliver this message.
  call.setAutoStartService(false);
  const auto reply = bus_.call(call, QDBus::Block, kPatienceInMilliseconds);
  return reply.type() == QDBusMessage::ReplyMessage;
}

}  // namespace Corvella
