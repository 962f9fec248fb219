#include "players/mpris/bus/BusWatch.h"

#include <exception>
#include <utility>

#include <poll.h>

namespace Corvella {

BusWatch::BusWatch(MprisObserver& observer, const MprisDeadlines& deadlines,
                   std::function<void()> busLost)
    : observer_(observer),
      deadlines_(deadlines),
      busLost_(std::move(busLost)),
      thread_([this] { run(); }) {}

BusWatch::~BusWatch() {
  stopping_ = true;
  wakeUp_.signal();
  thread_.join();
}

void BusWatch::probe(const std::string& owner) {
  add(toProbe_, owner);
}

void BusWatch::raise(const std::string& owner) {
  add(toRaise_, owner);
}

void BusWatch::lookLater(const std::string& owner) {
  add(toLookAt_, owner);
}

void BusWatch::add(Owners& owners, const std::string& owner) {
  {
    const std::lock_guard lock(mutex_);
    owners.push_back(owner);
  }
  wakeUp_.signal();
}

BusWatch::Owners BusWatch::take(Owners& owners) {
  const std::lock_guard lock(mutex_);
  return std::exchange(owners, {});
}

/// A bus that ends takes the desktop's session with it, as a rule. But it may also be started again
/// under programs that live on, and a program may be started before its bus.
void BusWatch::run() {
  while (!stopping_) {
    try {
      follow();
    } catch (const std::exception&) {
      busLost_();
      observer_.busLost();
      pollfd wakeUp{.fd = wakeUp_.descriptor(), .events = POLLIN, .revents = 0};
      poll(&wakeUp, 1, static_cast<int>(deadlines_.missingBus.count()));
      wakeUp_.clear();
    }
  }
}

void BusWatch::follow() {
  WatchedConnection connection(observer_, deadlines_);
  observer_.busFound();
  while (!stopping_) {
    // One message at a time: probes and the end of this object must not wait until a flood of
    // signals, or of large messages, is over.
    const bool mayHaveMore = connection.work();
    for (const auto& owner : take(toProbe_)) connection.probe(owner);
    for (const auto& owner : take(toRaise_)) connection.raise(owner);
    for (const auto& owner : take(toLookAt_)) connection.lookLater(owner);
    if (!mayHaveMore) connection.await(wakeUp_);
  }
}

}  // namespace Corvella
