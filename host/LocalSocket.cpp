#include "host/LocalSocket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Corvella {

namespace {

/// A name of a socket as the kernel wants it.
class Address {
 public:
  /// No name, or room for one.
  Address() { address_.sun_family = AF_UNIX; }
  /// Absent when the name is too long for one.
  static std::optional<Address> named(const std::string& name) {
    Address address;
    if (name.size() > sizeof address.address_.sun_path) return std::nullopt;
    std::memcpy(address.address_.sun_path, name.data(), name.size());
    address.length_ += static_cast<socklen_t>(name.size());
    return address;
  }

  // How sockets tell kinds of address.
  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address_); }
  sockaddr* get() { return reinterpret_cast<sockaddr*>(&address_); }
  socklen_t length() const { return length_; }

  /// For the kernel to write to, `length()` afterwards.
  socklen_t* room() {
    length_ = sizeof address_;
    return &length_;
  }
  /// Empty for a socket without a name, of which the kernel may not even tell the family.
  std::string name() const {
    if (length_ <= kBeforeName) return {};
    // It counts a zero behind the longest names, for which there is no room.
    return {address_.sun_path,
            std::min(std::size_t{length_} - kBeforeName, sizeof address_.sun_path)};
  }

 private:
  static constexpr socklen_t kBeforeName = offsetof(sockaddr_un, sun_path);

  sockaddr_un address_{};
  socklen_t length_ = kBeforeName;
};

void check(int result, const std::string& subject) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), subject);
}

}  // namespace

LocalSocket::LocalSocket()
    : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "socket") {}

LocalSocket LocalSocket::at(const std::string& path) {
  LocalSocket socket;
  const auto address = Address::named(path);
  if (!address) throw std::system_error(ENAMETOOLONG, std::generic_category(), path);
  ::unlink(path.c_str());
  check(::bind(socket.descriptor(), address->get(), address->length()), path);
  check(::chmod(path.c_str(), S_IRUSR | S_IWUSR), path);
  return socket;
}

LocalSocket LocalSocket::unnamed() {
  LocalSocket socket;
  const Address any;  // The kernel finds a name, for the answers.
  check(::bind(socket.descriptor(), any.get(), any.length()), "socket");
  return socket;
}

std::optional<LocalSocket::Message> LocalSocket::receive() const {
  constexpr std::size_t kLongest = 16;
  std::array<char, kLongest> text{};
  Address sender;
  const auto size =
      ::recvfrom(descriptor(), text.data(), text.size(), 0, sender.get(), sender.room());
  if (size < 0) return std::nullopt;
  return Message{.text = {text.data(), static_cast<std::size_t>(size)}, .sender = sender.name()};
}

std::optional<LocalSocket::Message> LocalSocket::receive(std::chrono::milliseconds patience) const {
  pollfd readable{.fd = descriptor(), .events = POLLIN, .revents = 0};
  ::poll(&readable, 1, static_cast<int>(patience.count()));
  return receive();
}

bool LocalSocket::send(std::string_view text, const std::string& address) const {
  const auto receiver = Address::named(address);
  if (!receiver || address.empty()) return false;
  const auto sent =
      ::sendto(descriptor(), text.data(), text.size(), 0, receiver->get(), receiver->length());
  return sent >= 0;
}

}  // namespace Corvella
