#pragma once

#include <array>
#include <cerrno>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <netinet/in.h>
#include <sys/socket.h>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// A web server on this machine for tests: it answers one request after the other with bytes that
/// the test chose, so that they may be wrong in any way.
class HttpServer {
 public:
  struct Answer {
    std::string bytes;
    bool thenHangs = false;  ///< Says nothing more until the client hangs up.
  };

  /// Starts to serve. Throws std::system_error when there is no port to be had.
  explicit HttpServer(std::vector<Answer> answers) : answers_(std::move(answers)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const any = reinterpret_cast<sockaddr*>(&address_);
    socklen_t size = sizeof address_;
    const int listener = listener_.number();
    if (::bind(listener, any, size) != 0 || ::listen(listener, 8) != 0 ||
        ::getsockname(listener, any, &size) != 0) {
      throw std::system_error(errno, std::generic_category(), "loopback server");
    }
    thread_ = std::thread([this] { serve(); });
  }
  ~HttpServer() {
    ::shutdown(listener_.number(), SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
  }

  /// "127.0.0.1:PORT"
  std::string host() const { return "127.0.0.1:" + std::to_string(ntohs(address_.sin_port)); }
  std::string url() const { return "http://" + host() + "/"; }

  /// The heads of all requests, when as many have come as there are answers. Called once.
  std::vector<std::string> requests() {
    thread_.join();
    return requests_;
  }

 private:
  void serve() {
    for (const auto& answer : answers_) {
      const int connection = ::accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC);
      if (connection < 0) return;
      const FileDescriptor owned(connection, "accept");
      auto& request = requests_.emplace_back();
      bool listening = true;
      while (listening && request.find("\r\n\r\n") == std::string::npos) {
        listening = receive(connection, request);
      }
      ::send(connection, answer.bytes.data(), answer.bytes.size(), MSG_NOSIGNAL);
      while (listening && answer.thenHangs) listening = receive(connection, request);
    }
  }

  /// Adds what the client says next; false when it has hung up.
  static bool receive(int connection, std::string& request) {
    std::array<char, 1024> buffer{};
    const auto count = ::recv(connection, buffer.data(), buffer.size(), 0);
    if (count > 0) request.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
  }

  FileDescriptor listener_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"};
  sockaddr_in address_{};
  const std::vector<Answer> answers_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

}  // namespace Corvella
