#include "host/SingleInstance.h"

#include <chrono>
#include <stdexcept>
#include <system_error>
#include <thread>

#include <unistd.h>

namespace Corvella {

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr auto kPatience = 3s;

std::string wordFor(SingleInstance::Message message) {
  return message == SingleInstance::Message::Open ? "open" : "toggle";
}

}  // namespace

SingleInstance::SingleInstance(const QString& folder)
    : lockPath_((folder + "/corvella.lock").toStdString()),
      socketPath_((folder + "/corvella.socket").toStdString()) {}

SingleInstance::~SingleInstance() {
  if (socket_) ::unlink(socketPath_.c_str());
}

bool SingleInstance::becomeFirst() {
  try {
    lock_.emplace(lockPath_);
    if (!lock_->tryLock()) return false;
    socket_.emplace(LocalSocket::at(socketPath_));
  } catch (const std::system_error& error) {
    throw std::runtime_error("cannot watch for other instances: " + std::string(error.what()));
  }
  return true;
}

void SingleInstance::listen() {
  notifier_ = std::make_unique<QSocketNotifier>(socket_->descriptor(), QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, &SingleInstance::read);
}

void SingleInstance::read() {
  const auto received = socket_->receive();
  if (!received) return;
  for (const auto message : {Message::Open, Message::Toggle}) {
    if (received->text == wordFor(message)) emit told(message);
  }
  socket_->send(received->text, received->sender);  // Read, this says.
}

bool SingleInstance::tellFirst(Message message) const {
  const auto socket = LocalSocket::unnamed();
  const auto deadline = steady_clock::now() + kPatience;
  // One that has just started does not listen at once.
  while (!socket.send(wordFor(message), socketPath_)) {
    if (steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(20ms);
  }
  return socket.receive(kPatience).has_value();
}

}  // namespace Corvella
