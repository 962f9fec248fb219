#pragma once

#include <array>
#include <cerrno>
#include <map>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <netinet/in.h>
#include <sys/socket.h>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// A web server on this machine for tests: it answers each path with bytes that the test chose, so
/// that they may be wrong in any way. Its operations may be called from any thread.
class HttpServer {
 public:
  struct Answer {
    std::string bytes;
    bool thenHangs = false;  ///< Says nothing more until the client hangs up.
  };

  /// Starts to serve. Throws std::system_error when there is no port to be had.
  HttpServer() {
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
    thread_.join();
  }
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  /// Other paths are answered with 404.
  void answer(const std::string& path, Answer answer) {
    const std::scoped_lock lock(mutex_);
    answers_.insert_or_assign(path, std::move(answer));
  }

  /// "http://127.0.0.1:PORT" with `path`, which starts with '/', behind.
  std::string url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)) + path;
  }

  /// The heads of all requests so far.
  std::vector<std::string> requests() {
    const std::scoped_lock lock(mutex_);
    return requests_;
  }

 private:
  void serve() {
    for (;;) {
      const int connection = ::accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC);
      if (connection < 0) return;
      const FileDescriptor owned(connection, "accept");
      converse(connection);
    }
  }

  /// Adds what the client says next; false when it has hung up.
  static bool receive(int connection, std::string& request) {
    std::array<char, 1024> buffer{};
    const auto count = ::recv(connection, buffer.data(), buffer.size(), 0);
    if (count > 0) request.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
  }

  void converse(int connection) {
    std::string request;
    while (request.find("\r\n\r\n") == std::string::npos) {
      if (!receive(connection, request)) return;
    }
    const auto answer = answerTo(request);
    ::send(connection, answer.bytes.data(), answer.bytes.size(), MSG_NOSIGNAL);
    while (answer.thenHangs && receive(connection, request)) continue;
  }

  Answer answerTo(const std::string& request) {
    const auto start = request.find(' ') + 1;
    const auto path = request.substr(start, request.find(' ', start) - start);
    const std::scoped_lock lock(mutex_);
    requests_.push_back(request);
    const auto found = answers_.find(path);
    return found != answers_.end() ? found->second : Answer{"HTTP/1.1 404 Not Found\r\n\r\n"};
  }

  FileDescriptor listener_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"};
  sockaddr_in address_{
      .sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
  std::mutex mutex_;
  std::map<std::string, Answer> answers_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

}  // namespace Corvella
