#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/FileDescriptor.h"

namespace Corvella {

/// A socket for short messages between programs of one user, under a path of the file system.
/// Throws `std::system_error` where the kernel refuses one.
class LocalSocket {
 public:
  struct Message {
    std::string text;
    std::string sender;  ///< Where an answer goes; empty when none can.
  };

  /// Takes messages at `path`, in place of what is there.
  static LocalSocket at(const std::string& path);
  /// Sends messages, and takes the answers to them.
  static LocalSocket unnamed();

  /// Readable when a message waits.
  int descriptor() const { return socket_.number(); }

  /// The oldest message that waits; absent when none does. Longer ones than those of Corvella are
  /// cut.
  std::optional<Message> receive() const;
  /// The same, once there is one; absent when none comes within `patience`.
  std::optional<Message> receive(std::chrono::milliseconds patience) const;

  /// Sends to the socket at `address`, a path or the sender of a message. Waits for nothing; false
  /// when nobody takes messages there, or too many wait.
  bool send(std::string_view text, const std::string& address) const;

 private:
  LocalSocket();

  FileDescriptor socket_;
};

}  // namespace Corvella
