#include "players/mpris/bus/BusConnections.h"

#include <algorithm>
#include <cstddef>
#include <system_error>
#include <utility>

namespace Corvella {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostIdle = 2;

/// What an error that came instead of a reply says about the player.
PlayerFailure failureOf(sd_bus* bus, const sd_bus_error& error) {
  if (sd_bus_is_open(bus) <= 0) return PlayerFailure::NotRunning;
  // Errors of the bus itself. What else there is comes from the player.
  for (const auto* gone :
       {SD_BUS_ERROR_NO_REPLY, SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER}) {
    if (sd_bus_error_has_name(&error, gone) != 0) return PlayerFailure::NotRunning;
  }
  return PlayerFailure::NotUnderstood;
}

PlayerAnswer<PropertyValue> exchange(sd_bus* bus, sd_bus_message& call, Clock::time_point end,
                                     const BusConnections::Read& read) {
  // To sd-bus a deadline of zero means its own default, which is much longer.
  const auto left = std::max<Clock::duration>(end - Clock::now(), std::chrono::microseconds(1));
  sd_bus_error error{};
  sd_bus_message* reply = nullptr;
  const int result = sd_bus_call(bus, &call, microseconds(left), &error, &reply);
  const BusMessage owned(reply);
  if (result >= 0) {
    try {
      return read(reply);
    } catch (const std::system_error&) {
      return PlayerFailure::NotUnderstood;
    }
  }
  // The clock tells whether the call was late, as a player may send an error of any name.
  const auto failure = Clock::now() >= end ? PlayerFailure::TimedOut : failureOf(bus, error);
  sd_bus_error_free(&error);
  return failure;
}

/// Reads and drops the messages that have come to a connection outside of a call. False when the
/// connection broke, or when so many have come that it is better closed.
bool drain(sd_bus* bus) {
  constexpr int kMostMessages = 100;
  int result = 1;
  for (int i = 0; i < kMostMessages && result > 0; ++i) result = sd_bus_process(bus, nullptr);
  return result == 0;
}

}  // namespace

PlayerAnswer<PropertyValue> BusConnections::call(const Compose& compose, const Read& read) try {
  const auto end = Clock::now() + deadline_;
  auto connection = take();
  auto answer = exchange(connection.get(), *compose(connection.get()), end, read);
  // A connection whose call was given up is closed, because the reply may still come.
  const bool usable = answer || answer.failure() == PlayerFailure::NotUnderstood;
  if (usable) giveBack(std::move(connection));
  return answer;
} catch (const std::system_error& error) {
  const bool late = error.code() == std::errc::timed_out;
  return late ? PlayerFailure::TimedOut : PlayerFailure::NotRunning;
}

void BusConnections::closeIdle() {
  const std::lock_guard lock(mutex_);
  idle_.clear();
}

BusConnection BusConnections::take() {
  {
    const std::lock_guard lock(mutex_);
    if (!idle_.empty()) {
      auto connection = std::move(idle_.back());
      idle_.pop_back();
      return connection;
    }
  }
  return connectToSessionBus(deadline_);
}

void BusConnections::giveBack(BusConnection connection) {
  const std::lock_guard lock(mutex_);
  if (idle_.size() < kMostIdle) idle_.push_back(std::move(connection));
  // Any program may send messages to a connection, and the bus keeps them until they are read.
  std::erase_if(idle_, [](const auto& idle) { return !drain(idle.get()); });
}

}  // namespace Corvella
