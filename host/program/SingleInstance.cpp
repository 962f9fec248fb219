#include "host/program/SingleInstance.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace Corvella {

namespace {

/// The name on the bus, and that of the interface.
constexpr auto kName = "org.corvella.Corvella";
constexpr auto kPath = "/org/corvella/Corvella";
constexpr int kPatienceInMilliseconds = 3000;

}  // namespace

SingleInstance::Role SingleInstance::claimName() {
  if (!bus_.isConnected()) return Role::Alone;
  // The object is registered first, because another instance that finds the name may call it at
  // once.
  bus_.registerObject(kPath, this, QDBusConnection::ExportScriptableInvokables);
  const auto reply =
      bus_.interface()->registerService(kName, QDBusConnectionInterface::DontQueueService);
  return reply == QDBusConnectionInterface::ServiceRegistered ? Role::First : Role::Later;
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
