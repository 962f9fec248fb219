#pragma once

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// What one program tells another: texts without line breaks, by name.
using Fields = std::map<std::string, std::string>;

inline std::string written(const Fields& fields) {
  std::string text;
  for (const auto& [name, value] : fields) text.append(name).append("\t").append(value) += '\n';
  return text;
}

inline Fields readFields(const std::string& text) {
  Fields fields;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const auto tab = line.find('\t');
    if (tab != std::string::npos) fields[line.substr(0, tab)] = line.substr(tab + 1);
  }
  return fields;
}

/// One end of a line between two processes, which carries whole messages. Used by one thread.
class Channel {
 public:
  explicit Channel(int descriptor) : socket_(descriptor, "a channel") {}

  /// Both ends. The second is for a program that is started next: it stays open in all programs
  /// that are started while this process has it.
  static std::pair<Channel, Channel> makePair() {
    int ends[2] = {-1, -1};  // NOLINT(modernize-avoid-c-arrays): as the kernel takes them.
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) != 0) {
      throw std::system_error(errno, std::generic_category(), "socketpair");
    }
    ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    return {Channel(ends[0]), Channel(ends[1])};
  }

  int descriptor() const { return socket_.number(); }

  /// Nothing happens when the other end has gone.
  void send(const std::string& message) const {
    ::send(descriptor(), message.data(), message.size(), MSG_NOSIGNAL);
  }

  /// The next message; absent when none comes in time or the other end has gone.
  std::optional<std::string> receive(std::chrono::milliseconds patience) const {
    pollfd file{descriptor(), POLLIN, 0};
    if (::poll(&file, 1, static_cast<int>(patience.count())) <= 0) return std::nullopt;
    constexpr std::size_t kLongest = 1 << 17;
    std::string message(kLongest, '\0');
    const auto length = ::recv(descriptor(), message.data(), message.size(), 0);
    if (length <= 0) return std::nullopt;
    message.resize(static_cast<std::size_t>(length));
    return message;
  }

 private:
  FileDescriptor socket_;
};

}  // namespace Corvella
