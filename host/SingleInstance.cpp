#include "host/SingleInstance.h"

#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QThread>
#include <stdexcept>

namespace Corvella {

namespace {

constexpr int kPatience = 3000;  // Milliseconds.

QByteArray wordFor(SingleInstance::Message message) {
  return message == SingleInstance::Message::Open ? "open\n" : "toggle\n";
}

}  // namespace

SingleInstance::SingleInstance(const QString& folder)
    : socketPath_(folder + "/corvella.socket"), lock_(folder + "/corvella.lock") {
  // It is held as long as the program runs; that of a program that has died counts for nothing.
  lock_.setStaleLockTime(0);
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::acceptNext);
}

bool SingleInstance::becomeFirst() {
  if (!lock_.tryLock(0)) {
    if (lock_.error() == QLockFile::LockFailedError) return false;
    throw std::runtime_error("cannot write in the folder of " + socketPath_.toStdString());
  }
  QLocalServer::removeServer(socketPath_);  // One that has died leaves its socket behind.
  if (!server_.listen(socketPath_)) {
    throw std::runtime_error("cannot listen on " + socketPath_.toStdString() + ": " +
                             server_.errorString().toStdString());
  }
  return true;
}

bool SingleInstance::tellFirst(Message message) {
  QLocalSocket socket;
  const QDeadlineTimer deadline(kPatience);
  // One that has just started does not listen at once.
  while (socket.state() != QLocalSocket::ConnectedState) {
    if (deadline.hasExpired()) return false;
    socket.connectToServer(socketPath_);
    if (!socket.waitForConnected(kPatience)) QThread::msleep(20);
  }
  socket.write(wordFor(message));
  if (!socket.waitForBytesWritten(kPatience)) return false;
  // It hangs up once it has read.
  return socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected(kPatience);
}

void SingleInstance::acceptNext() {
  while (auto* const socket = server_.nextPendingConnection()) {
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] { read(*socket); });
    read(*socket);
  }
}

void SingleInstance::read(QLocalSocket& socket) {
  constexpr qint64 kLongestMessage = 16;
  if (!socket.canReadLine()) {
    if (socket.bytesAvailable() > kLongestMessage) socket.abort();
    return;
  }
  const auto word = socket.readLine(kLongestMessage);
  for (const auto message : {Message::Open, Message::Toggle}) {
    if (word == wordFor(message)) emit told(message);
  }
  socket.disconnectFromServer();
}

}  // namespace Corvella
