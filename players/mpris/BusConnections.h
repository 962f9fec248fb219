#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "players/PlayerAnswer.h"
#include "players/mpris/MprisBus.h"
#include "players/mpris/MprisNames.h"

namespace Corvella {

/// Connections to the session bus for blocking calls, each used by one caller at a time and by no
/// event loop. Any thread.
class BusConnections {
 public:
  /// Connects for the first two callers, who come at the same time. Throws `sdbus::Error` when the
  /// bus cannot be reached.
  BusConnections();

  /// Makes a call to a player's object, composed by `compose(message)`, and reads its reply by
  /// `read(message)`. Blocks for at most `MprisBus::kDeadline`, and fails as `MprisBus` does.
  template <typename Compose, typename Read>
  auto call(const std::string& owner, const char* interface, const char* method, Compose compose,
            Read read) -> PlayerAnswer<decltype(read(std::declval<sdbus::Message&>()))> {
    Connection connection;
    try {
      connection = take();
    } catch (const sdbus::Error&) {
      return PlayerFailure::NotRunning;
    }
    auto answer = callOn(*connection, owner, interface, method, compose, read);
    // Otherwise a late reply would stay in the connection's queue, or the connection is broken.
    const bool usable = answer || answer.failure() == PlayerFailure::NotUnderstood;
    if (usable) giveBack(std::move(connection));
    return answer;
  }

 private:
  using Connection = std::unique_ptr<sdbus::IConnection>;

  template <typename Compose, typename Read>
  static auto callOn(sdbus::IConnection& connection, const std::string& owner,
                     const char* interface, const char* method, Compose compose, Read read)
      -> PlayerAnswer<decltype(read(std::declval<sdbus::Message&>()))> {
    const auto start = std::chrono::steady_clock::now();
    try {
      const auto proxy = sdbus::createProxy(connection, owner, MprisNames::kPlayerPath);
      auto message = proxy->createMethodCall(interface, method);
      compose(message);
      auto reply = proxy->callMethod(message, kDeadline);
      return readReply(reply, read);
    } catch (const sdbus::Error& error) {
      return failureOf(error, std::chrono::steady_clock::now() - start >= kDeadline);
    }
  }

  template <typename Read>
  static auto readReply(sdbus::Message& reply, Read read) -> PlayerAnswer<decltype(read(reply))> {
    try {
      return read(reply);
    } catch (const sdbus::Error&) {
      return PlayerFailure::NotUnderstood;
    }
  }

  /// What an error that came instead of a reply says about the player. `late` tells whether the
  /// deadline has passed: a player may send any name itself.
  static PlayerFailure failureOf(const sdbus::Error& error, bool late);

  Connection take();
  void giveBack(Connection connection);

  static constexpr auto kDeadline = MprisBus::kDeadline;

  std::mutex mutex_;
  std::vector<Connection> idle_;
};

}  // namespace Corvella
