#include "tests/support/HttpServer.h"

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>

namespace Corvella {

namespace {

/// Adds what the client says next; false when it has hung up.
bool receive(int connection, std::string& request) {
  std::array<char, 1024> buffer{};
  const auto count = ::recv(connection, buffer.data(), buffer.size(), 0);
  if (count > 0) request.append(buffer.data(), static_cast<std::size_t>(count));
  return count > 0;
}

/// False when the client has hung up.
bool send(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

HttpServer::HttpServer() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket") {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  const int listener = listener_.number();
  if (::bind(listener, any, size) != 0 || ::listen(listener, 8) != 0 ||
      ::getsockname(listener, any, &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "loopback server");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { serve(); });
}

HttpServer::~HttpServer() {
  ::shutdown(listener_.number(), SHUT_RDWR);
  thread_.join();
}

void HttpServer::answer(const std::string& path, Answer answer) {
  const std::scoped_lock lock(mutex_);
  answers_[path] = std::move(answer);
}

std::string HttpServer::url(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + path;
}

std::vector<std::string> HttpServer::requests() const {
  const std::scoped_lock lock(mutex_);
  return requests_;
}

void HttpServer::serve() {
  for (;;) {
    const int connection = ::accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) return;
    const FileDescriptor owned(connection, "accept");
    converse(connection);
  }
}

void HttpServer::converse(int connection) {
  std::string request;
  while (request.find("\r\n\r\n") == std::string::npos) {
    if (!receive(connection, request)) return;
  }
  const Answer answer = answerTo(request);
  bool listening = send(connection, answer.bytes);
  const std::string filling(1024, 'x');
  while (listening && answer.then == Then::RepeatBody) listening = send(connection, filling);
  while (listening && answer.then == Then::KeepSilence) listening = receive(connection, request);
}

HttpServer::Answer HttpServer::answerTo(const std::string& request) {
  const auto start = request.find(' ') + 1;
  const auto path = request.substr(start, request.find(' ', start) - start);
  const std::scoped_lock lock(mutex_);
  requests_.push_back(request);
  const auto found = answers_.find(path);
  return found != answers_.end() ? found->second : Answer{"HTTP/1.1 404 Not Found\r\n\r\n"};
}

}  // namespace Corvella
